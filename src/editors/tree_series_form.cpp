#include "editors/tree_series_form.h"

#include "dataset/findings.h"
#include "dataset/text_encoding.h"
#include "platform/counted.h"

#include <algorithm>

namespace vesk {

namespace {

std::vector<record_column<system_data_type>> factor_columns(const tree_series_form::traits& traits) {
  using system = system_data_type;
  const std::string format(traits.factor_format);
  return {
      {.header = "System", .type = text_cell(), .field = &system::description, .tool_tip = description_tip},
      {.header = "Scale factor", .type = number_cell({}), .field = traits.scale, .format = format},
      {.header = "Conversion factor", .type = number_cell({}), .field = traits.conversion, .format = format},
  };
}

} // namespace

tree_series_form::tree_series_form(editor_host& host, const traits& differences)
    : editor(host), traits_(differences), points_(host, std::string(differences.value_format)),
      systems_(data_set_grid(host, &prevesk_dataset_data_type::systems, factor_columns(differences))),
      series_panel_(add_panel("TimeFunctionFillCalcTable", points_, series_buttons, &points_)),
      system_panel_(add_panel("SystemFillCalcTable", systems_, block_buttons)), copy_form_(host) {
  series_panel_.label_name = traits_.label_name;
}

std::size_t tree_series_form::group_count() const {
  return host().data_set() ? host().data_set()->systems.size() : 0;
}

std::string tree_series_form::group_text(std::size_t system) const {
  return shown_text(host().data_set()->systems[system].description);
}

std::size_t tree_series_form::item_count(std::size_t system) const {
  return system < group_count() ? series_count(*host().data_set(), traits_.kind, system) : 0;
}

std::string tree_series_form::item_text(std::size_t system, std::size_t item) const {
  return segment_name(segment_of({traits_.kind, system, item}));
}

// The tip identifies the segment, since names may be empty or duplicated.
std::string tree_series_form::item_tip(std::size_t system, std::size_t item) const {
  const std::int32_t segment = segment_of({traits_.kind, system, item});
  if (!is_segment(segment)) return missing_segment_finding(segment);
  const std::string age = source_age(*find_series(*host().data_set(), {traits_.kind, system, item}));
  return "Segment " + std::to_string(segment + 1) + (age.empty() ? std::string() : "\n" + age);
}

bool tree_series_form::item_mark(std::size_t system, std::size_t item) const {
  const series_ref ref{traits_.kind, system, item};
  return !is_segment(segment_of(ref)) || !source_age(*find_series(*host().data_set(), ref)).empty();
}

int tree_series_form::image(const node& which) const {
  constexpr int system_image = 2, record_image = 3;
  return which.item ? record_image : which.group ? system_image : traits_.root_image;
}

std::int32_t tree_series_form::segment_of(const series_ref& ref) const {
  const system_data_type& system = host().data_set()->systems[ref.owner];
  return ref.kind == series_kind::load ? system.loads[ref.index].segment : system.boundaries[ref.index].segment;
}

bool tree_series_form::is_segment(std::int32_t segment) const {
  return segment >= 0 && static_cast<std::size_t>(segment) < host().data_set()->segments.size();
}

std::string tree_series_form::segment_name(std::int32_t segment) const {
  return is_segment(segment) ? shown_text(host().data_set()->segments[static_cast<std::size_t>(segment)].name)
                             : std::string();
}

std::string tree_series_form::full_name(const series_ref& ref) const {
  std::string name = series_name(*host().data_set(), ref);
  name.front() = 's';
  return name;
}

std::optional<series_ref> tree_series_form::selected_record() const {
  if (!selected_ || !selected_->group || !selected_->item) return std::nullopt;
  const series_ref ref{traits_.kind, *selected_->group, *selected_->item};
  return host().data_set() && find_series(*host().data_set(), ref) ? std::optional(ref) : std::nullopt;
}

void tree_series_form::select(std::optional<node> which) {
  if (selected_ == which) return;
  if (!may_go_on()) return refresh_tree(); // restores the old selection
  selected_ = which;
  const auto record = selected_record();
  identity_ = record ? std::optional(identity_of(*host().data_set(), *record)) : std::nullopt;
  if (selected_ && selected_->group && *selected_->group < group_count())
    system_ = host().data_set()->systems[*selected_->group].isc;
  series_panel_.table.set_selection(std::nullopt);
  series_panel_.table.set_active(0, series_panel_.table.active_column());
  show_selected();
}

void tree_series_form::FormShow() {
  selected_.reset();
  editor::FormShow();
}

std::optional<std::size_t> tree_series_form::segment_in_focus() const {
  const std::optional<series_ref> ref = selected_record();
  if (!ref || !is_segment(segment_of(*ref))) return std::nullopt;
  return static_cast<std::size_t>(segment_of(*ref));
}

bool tree_series_form::select_segment(std::size_t segment) {
  return select_next_node([&](const node& at) {
    return at.item && segment_of({traits_.kind, *at.group, *at.item}) == static_cast<std::int32_t>(segment);
  });
}

std::string tree_series_form::hint() const {
  bool any = false;
  for (std::size_t system = 0; system < group_count() && !any; ++system) any = item_count(system) > 0;
  if (group_count() == 0) return "The model has no systems. Data > Data set chooses a model.";
  return std::string(any ? traits_.empty_hint : traits_.nothing_hint);
}

void tree_series_form::take_content() {
  systems_.take_formats(host());
  points_.take_format();
  follow_selected();
  system_panel_.table.show(systems_);
  refresh_tree();
  show_selected();
}

// Another record, with other points, may be at its position; and another system at that of a system.
void tree_series_form::follow_selected() {
  const prevesk_dataset_data_type* data = host().data_set();
  if (!data || !selected_) return selected_.reset();
  if (selected_->item) {
    const auto record = identity_ ? find_series(*data, *identity_) : std::nullopt;
    selected_ = record ? std::optional(node{record->owner, record->index}) : std::nullopt;
  } else if (selected_->group) {
    const auto has_number = [this](const system_data_type& system) { return system.isc == system_; };
    const auto& systems = data->systems;
    if (*selected_->group < systems.size() && has_number(systems[*selected_->group])) return;
    const auto found = std::find_if(systems.begin(), systems.end(), has_number);
    if (found == systems.end()) return selected_.reset();
    selected_ = node{static_cast<std::size_t>(found - systems.begin()), std::nullopt};
  }
}

void tree_series_form::records_changed() {
  if (selected_ && selected_->item) selected_.reset();
  refresh_tree();
  show_selected();
}

void tree_series_form::show_selected() {
  const std::optional<series_ref> ref = selected_record();
  points_.set_series(ref);
  const bool on_record_level = selected_ && selected_->item;
  series_panel_.label = ref               ? "Time functions for " + full_name(*ref)
                        : on_record_level ? "Time functions"
                                          : "Time Functions";
  series_panel_.empty_hint = ref ? std::string() : hint();
  InterpolationTypeComboBox.is_visible = ref.has_value();
  if (ref) {
    const std::uint32_t type = interpolation_of(*host().data_set(), *ref);
    InterpolationTypeComboBox.position = type == interpolation_linear ? 0 : 1;
  }
  series_panel_.table.show(points_);
  refresh_series();
  refresh_texts();
}

std::vector<editor_tree::menu_item> tree_series_form::menu(const node& which) {
  if (!which.item || *which.item >= item_count(*which.group)) return {};
  const series_ref record{traits_.kind, *which.group, *which.item};
  return {{"&Copy to...", "CopySeriesItem", true, [=, this] { copy_record(record); }}};
}

copy_targets tree_series_form::chosen_targets() const {
  copy_targets targets{{}, {}, copy_form_.with_query};
  for (std::size_t system = 0; system < copy_form_.SystemCheckListBox.size(); ++system)
    if (copy_form_.SystemCheckListBox[system]) targets.systems.push_back(system);
  for (std::size_t row = 0; row < copy_form_.SegmentCheckListBox.size(); ++row)
    if (copy_form_.SegmentCheckListBox[row]) targets.segments.push_back(copy_form_.offered[row]);
  return targets;
}

std::string tree_series_form::copies_in_words(std::size_t added, std::size_t replaced) const {
  const bool load = traits_.kind == series_kind::load;
  std::string text;
  if (replaced > 0)
    text = counted(replaced, load ? "load" : "boundary", load ? "loads" : "boundaries") +
           (replaced == 1 ? " gets" : " get") + " new points";
  if (added > 0)
    text += (text.empty() ? "" : ", ") + counted(added, "load") + (added == 1 ? " is added" : " are added");
  return text;
}

// A boundary can only be copied to existing ones.
void tree_series_form::copy_record(const series_ref& source) {
  if (!may_go_on() || !find_series(*host().data_set(), source)) return;
  const prevesk_dataset_data_type& data = *host().data_set();
  std::vector<bool> offers(data.segments.size(), source.kind == series_kind::load);
  for (const system_data_type& system : data.systems)
    for (const boundary_data_type& boundary : system.boundaries)
      if (is_segment(boundary.segment)) offers[static_cast<std::size_t>(boundary.segment)] = true;
  std::vector<std::size_t> offered;
  for (std::size_t segment = 0; segment < offers.size(); ++segment)
    if (offers[segment]) offered.push_back(segment);
  copy_form_.begin(series_name(data, source), source.owner, std::move(offered));
  copy_form_.outcome = [this, source](const TCopySeriesForm&) {
    const copy_counts counts = count_copies(*host().data_set(), source, chosen_targets());
    const std::string words = copies_in_words(counts.added, counts.replaced);
    return words.empty() ? "Choose the systems and segments to copy to." : words + ".";
  };
  const std::uint64_t generation = host().generation();
  if (!host().questions().show_form(copy_form_) || host().generation() != generation) return;

  history_step step = begin_step("Copy");
  const copy_counts counts = copy_series(*host().data_set(), source, chosen_targets());
  const bool any = counts.added + counts.replaced > 0;
  step.end(any);
  refresh_tree();
  show_selected();
  set_message(any ? "Copied: " + copies_in_words(counts.added, counts.replaced) + "."
                  : "Nothing was copied: no other record was chosen.");
}

void tree_series_form::ChoiceChange(std::size_t position) {
  const std::optional<series_ref> ref = selected_record();
  if (!ref || !may_go_on() || position == InterpolationTypeComboBox.position) return refresh_texts();
  history_step step = begin_step("Interpolation");
  edit_interpolation(*host().data_set(), *ref) = static_cast<std::uint32_t>(position);
  step.end();
  show_selected();
}

std::string tree_series_form::find_refusal() {
  const prevesk_dataset_data_type* data = host().data_set();
  std::string refusal;
  if (!data) return refusal;
  for_each_series(*data, traits_.kind, [&](const series_ref& ref) {
    if (refusal.empty() && !moments_unique(find_series(*data, ref)->points))
      refusal = "Detected duplicate moment in time function for\r\n" + full_name(ref);
  });
  return refusal;
}

} // namespace vesk
