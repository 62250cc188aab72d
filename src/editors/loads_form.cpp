#include "editors/loads_form.h"

#include <algorithm>
#include <vector>

namespace vesk {

namespace {

// One of the two required texts is spelled "dso".
constexpr const char* sure = "Are you sure you want to do this?";
constexpr const char* sure_of_list = "Are you sure you want to dso this?";

// Which segments have a load; loads outside the network do not count.
std::vector<bool> loaded_segments(const shared_list<loads_data_type>& loads, std::size_t segments) {
  std::vector<bool> loaded(segments);
  for (const loads_data_type& load : loads)
    if (load.segment >= 0 && static_cast<std::size_t>(load.segment) < segments)
      loaded[static_cast<std::size_t>(load.segment)] = true;
  return loaded;
}

} // namespace

TLoadsForm::TLoadsForm(editor_host& host)
    : tree_series_form(host,
                       {"TLoadsForm", "Loads", "LoadsTree", series_kind::load, "LoadsTimeFunctionValueSimpleField",
                        "LoadsSystemNumericField", &system_data_type::scalw, &system_data_type::convw,
                        "Choose a load in the tree. A system's menu adds and removes loads.",
                        "No loads: open a system's menu in the tree with the right mouse button, the Menu key or "
                        "Shift+F10, and choose Add/Remove Loads.",
                        0, "TimeFunctionsLabel"}),
      select_segments_(host) {}

std::vector<editor_tree::menu_item> TLoadsForm::menu(const node& which) {
  const prevesk_dataset_data_type* data = host().data_set();
  if (!data || !which.group || *which.group >= data->systems.size()) return {};
  const std::size_t system = *which.group;
  if (which.item) {
    std::vector<menu_item> items = tree_series_form::menu(which);
    items.insert(items.begin(),
                 menu_item{"&Delete", "DeleteLoadItem", true, [=, this] { delete_load(system, *which.item); }, "Del"});
    return items;
  }
  return {{"&Add/Remove Loads", "AddRemoveLoadsItem", true, [=, this] { add_remove_loads(system); }, "Ins"},
          {"Add A&ll Loads", "AddAllLoadsItem", !data->segments.empty(), [=, this] { add_all_loads(system); }},
          {"&Delete All Loads", "DeleteAllLoadsItem", !data->systems[system].loads.empty(),
           [=, this] { delete_all_loads(system); }}};
}

loads_data_type TLoadsForm::new_load(std::size_t segment) const {
  loads_data_type load;
  load.segment = static_cast<std::int32_t>(segment);
  host().data_set()->ensure_default_points(load.points);
  return load;
}

void TLoadsForm::change_loads(std::size_t system, const std::string& label,
                              const std::function<void(shared_list<loads_data_type>&)>& change) {
  history_step step = begin_step(label);
  change(host().data_set()->systems.edit(system).loads);
  step.end();
  records_changed();
}

bool TLoadsForm::ask(const std::string& text) {
  const std::uint64_t generation = host().generation();
  const box_answer answer = host().questions().message_box("Delete Load?", text, box_buttons::yes_no);
  return answer == box_answer::yes && host().generation() == generation;
}

bool TLoadsForm::may_delete(std::size_t system, std::int32_t segment, const char* question) {
  return ask("You have chosen to delete the following load:\r\n" + group_text(system) + "\r\n" +
             std::to_string(static_cast<std::int64_t>(segment) + 1) + ": " + segment_name(segment) +
             "\r\nThis will delete this load and all of its\r\ntime/value information.\r\n" + question);
}

void TLoadsForm::add_all_loads(std::size_t system) {
  if (!may_go_on()) return;
  const std::size_t segments = host().data_set()->segments.size();
  const std::vector<bool> loaded = loaded_segments(host().data_set()->systems[system].loads, segments);
  if (std::ranges::find(loaded, false) == loaded.end()) return set_message("Every segment has a load of this system.");
  change_loads(system, "Add All Loads", [&](shared_list<loads_data_type>& loads) {
    for (std::size_t segment = 0; segment < segments; ++segment)
      if (!loaded[segment]) loads.push_back(new_load(segment));
  });
}

void TLoadsForm::delete_all_loads(std::size_t system) {
  if (!may_go_on()) return;
  if (!ask("You have chosen to delete all loads\r\nfor the following system:\r\n" + group_text(system) +
           "\r\nThis will delete each load and all\r\ntheir time/value information.\r\n" + sure_of_list))
    return;
  change_loads(system, "Delete All Loads", [](shared_list<loads_data_type>& loads) { loads.clear(); });
}

void TLoadsForm::delete_load(std::size_t system, std::size_t load) {
  if (!may_go_on() || load >= item_count(system)) return;
  const std::int32_t segment = segment_of({series_kind::load, system, load});
  if (!may_delete(system, segment, sure)) return;
  change_loads(system, "Delete", [segment](shared_list<loads_data_type>& loads) {
    for (std::size_t i = 0; i < loads.size(); ++i)
      if (loads[i].segment == segment) return loads.erase(i); // the first one of the segment
  });
}

void TLoadsForm::add_remove_loads(std::size_t system) {
  if (!may_go_on()) return;
  select_segments_.selected_system = system;
  const bool by_ok = host().questions().show_form(select_segments_);
  // The data set's replacement by a job has also refreshed the list.
  const std::uint64_t generation = select_segments_.shown_generation();
  if (!by_ok || host().generation() != generation || system >= group_count()) return records_changed();

  // All questions come first: the data set may be replaced during one, and then nothing is changed.
  const shared_list<loads_data_type> present = host().data_set()->systems[system].loads;
  const std::vector<bool> wanted = select_segments_.SegmentCheckListBox;
  const std::vector<bool> loaded = loaded_segments(present, wanted.size());
  std::vector<std::int32_t> unwanted;
  std::vector<std::size_t> missing;
  for (std::size_t segment = 0; segment < wanted.size(); ++segment) {
    const auto number = static_cast<std::int32_t>(segment);
    if (wanted[segment] && !loaded[segment]) missing.push_back(segment);
    if (wanted[segment] || !loaded[segment]) continue;
    if (may_delete(system, number, sure_of_list)) unwanted.push_back(number);
    if (host().generation() != generation) return;
  }
  if (unwanted.empty() && missing.empty()) return records_changed();
  change_loads(system, "Add/Remove Loads", [&](shared_list<loads_data_type>& loads) {
    for (const std::int32_t segment : unwanted) {
      const auto found =
          std::find_if(loads.begin(), loads.end(), [=](const auto& load) { return load.segment == segment; });
      loads.erase(static_cast<std::size_t>(found - loads.begin()));
    }
    for (const std::size_t segment : missing) loads.push_back(new_load(segment));
  });
}

} // namespace vesk
