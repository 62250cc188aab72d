#include "editors/editor.h"

#include "charts/csv_text.h"
#include "charts/graph_form.h"
#include "dataset/findings.h"
#include "dataset/series_identity.h"
#include "editors/fill_calculate_form.h"
#include "editors/import_time_series_form.h"
#include "editors/name_search.h"
#include "editors/series_refresh.h"
#include "editors/series_tools.h"
#include "platform/counted.h"
#include "platform/safe_file.h"

#include <algorithm>
#include <utility>

namespace vesk {

namespace {

// Sets a flag while it lives.
class during {
public:
  explicit during(bool& flag) : flag_(flag), before_(std::exchange(flag, true)) {}
  ~during() { flag_ = before_; }
  during(const during&) = delete;
  during& operator=(const during&) = delete;

private:
  bool& flag_;
  const bool before_;
};

// Consecutive cells typed into one series are one step.
std::string merge_key(std::string_view class_name, const series_ref& ref) {
  std::string key(class_name);
  for (const std::size_t part : {static_cast<std::size_t>(ref.kind), ref.owner, ref.index})
    key += " " + std::to_string(part);
  return key;
}

// The first column of texts.
std::optional<std::size_t> name_column(const editor_panel& panel) {
  const auto columns = panel.table.content().columns();
  for (std::size_t column = 0; column < columns.size(); ++column)
    if (columns[column].type.kind == cell_kind::text) return column;
  return std::nullopt;
}

std::string as_sentence(const std::string& text) {
  return text.ends_with('.') ? text : text + ".";
}

std::string refusal_of_entry(const editor_panel& panel) {
  const auto& refused = panel.table.refused();
  return refused ? "Row " + std::to_string(refused->row + 1) + ": " + refused->reason + "." : std::string();
}

} // namespace

editor::~editor() = default;

editor_panel& editor::add_panel(std::string table_name, grid& content, unsigned buttons, series_grid* series) {
  panels_.push_back(std::make_unique<editor_panel>(std::move(table_name), content, buttons, series));
  editor_panel& panel = *panels_.back();
  panel.table.OnBeginChange = [this, &panel](const std::string& label) {
    const bool typed = label == "Edit" && panel.series && panel.series->ref();
    host_.begin_step(caption() + ": " + label, typed ? merge_key(class_name(), *panel.series->ref()) : std::string());
  };
  panel.table.OnAllowEdit = [this] { return nothing_is_refused(); };
  panel.table.OnEndChange = [this, &panel](bool completed) {
    end_step(completed);
    if (panel.series) refresh_series();
    refresh_texts();
  };
  return panel;
}

void editor::FormShow() {
  message_.clear();
  ages_.forget();
  marked_panel_ = 0;
  for (const auto& panel : panels_) {
    panel->table.give_up_refused();
    panel->table.set_selection(std::nullopt);
  }
  take_content();
  refresh_series();
  refresh_texts();
}

bool editor::FormCloseQuery(bool by_ok) {
  if (!by_ok) return true;
  if (!may_go_on()) return false;
  const std::string refusal = find_refusal();
  if (refusal.empty()) {
    accepted();
    return true;
  }
  host_.questions().message_box(std::string(refusal_title()), refusal, box_buttons::ok);
  return false;
}

history_step editor::begin_step(const std::string& label) {
  return {host_, caption() + ": " + label, [this](bool completed) { end_step(completed); }};
}

// A failed step also replaces the data set, with the state before the step.
void editor::end_step(bool completed) {
  const during own_step(takes_step_);
  host_.end_step(completed);
}

void editor::data_set_replaced() {
  if (!takes_step_)
    message_ = "A job has replaced the data set. If it changed the input, Undo restores the previous one.";
  ages_.forget();
  for (const auto& panel : panels_) panel->table.give_up_refused();
  take_content();
  refresh_series();
  refresh_texts();
}

bool editor::may_go_on() {
  set_message({});
  return nothing_is_refused();
}

bool editor::nothing_is_refused() {
  for (const auto& panel : panels_) {
    if (!panel->table.refused()) continue;
    panel->table.set_active(panel->table.refused()->row, panel->table.refused()->column);
    if (view_) view_->go_to_panel(*panel);
    return false;
  }
  for (entry_field* field : fields()) {
    if (field->refusal().empty()) continue;
    field_entered(*field);
    if (view_) view_->go_to_refused_field(*field);
    return false;
  }
  return true;
}

void editor::field_entered(const entry_field& field) {
  set_message(field.refusal().empty() ? std::string() : field.label + ": " + field.refusal() + ".");
}

void editor::say(const std::string& title, const std::string& sentence) {
  host_.questions().message_box(title, sentence, box_buttons::ok);
}

void editor::set_message(std::string message) {
  message_ = std::move(message);
  refresh_texts();
}

void editor::refresh_texts() {
  if (view_) view_->texts_changed();
}

void editor::refresh_series() {
  if (view_) view_->series_changed();
}

void editor::refresh_tree() {
  if (view_) view_->tree_changed();
}

// The buttons.

void editor::InsertRowButtonClick(editor_panel& panel) {
  if (may_go_on()) panel.table.insert_row_at_active();
}

void editor::DeleteRowButtonClick(editor_panel& panel) {
  if (!may_go_on()) return;
  if (panel.table.content().row_count() == 0) return set_message(nothing_to_delete);
  panel.table.delete_active_row();
}

void editor::DeleteAllButtonClick(editor_panel& panel) {
  if (!may_go_on()) return;
  if (panel.table.content().row_count() == 0) return set_message(nothing_to_delete);
  panel.table.delete_all_rows();
}

void editor::delete_selected_rows(editor_panel& panel) {
  if (may_go_on()) panel.table.delete_selected_rows();
}

std::string editor::reason_against(panel_buttons button, const editor_panel& panel) const {
  constexpr unsigned row_buttons = insert_button | delete_button | delete_all_button;
  if (panel.buttons & button) {
    const bool has_rows = panel.table.content().has_free_rows() || !(button & row_buttons);
    const bool has_series = !panel.series || panel.series->series();
    return has_rows && has_series ? std::string() : panel.empty_hint;
  }
  if (button & row_buttons) return "The rows of this grid are fixed: first select a grid whose rows can be changed.";
  if (button == fill_calc_button) return "This grid has no numbers to fill: first select another grid.";
  if (button == graph_button) return "Only a series can be drawn: first select the grid of times and values.";
  return "This grid does not support this command: first select another grid.";
}

void editor::sort_by_date_and_time(editor_panel& panel) {
  if (may_go_on()) panel.table.sort_rows();
}

void editor::back_to_default(editor_panel& panel) {
  if (may_go_on()) panel.table.back_to_default();
}

void editor::CopyButtonClick(editor_panel& panel, bool with_headers) {
  if (!may_go_on()) return;
  if (panel.table.is_shown_as_empty()) return set_message("There is nothing to copy.");
  host_.questions().set_clipboard_text(panel.table.do_copy(with_headers));
}

void editor::PasteButtonClick(editor_panel& panel) {
  if (!may_go_on()) return;
  // Inserting or erasing rows may set a message first.
  const TFillCalcTable::paste_outcome pasted = panel.table.do_paste(host_.questions().clipboard_text());
  if (!pasted.refusal.empty()) return say("Paste", pasted.refusal);
  std::string came = counted(pasted.rows, "row");
  if (const stored_series* series = panel.series ? panel.series->series() : nullptr) {
    const auto first = series->points.begin() + pasted.first_row;
    const auto [earliest, latest] = std::minmax_element(first, first + pasted.rows);
    came += ", " + day_text(*earliest) + " to " + day_text(*latest);
  }
  set_message("Pasted: " + came + "." + (message_.empty() ? "" : " " + message_));
}

void editor::FillCalcButtonClick(editor_panel& panel) {
  if (!may_go_on()) return;
  if (panel.table.is_shown_as_empty())
    return set_message(TFillCalcTable::nothing_to_fill); // instead of asking for an expression
  TFillCalculateForm& dialog = host_.fill_calculate_form();
  const std::uint64_t generation = host_.generation();
  if (!host_.questions().show_form(dialog) || host_.generation() != generation) return;
  const std::string refusal = panel.table.calculate_selection(dialog.FillCalculateEdit);
  if (!refusal.empty()) say(dialog.caption(), refusal);
}

std::unique_ptr<general_graph_data> editor::graph_data(const editor_panel& panel) const {
  auto data = panel.table.generate_moment_value_graph_data(1, 2, 3);
  if (!data) return nullptr;
  if (!panel.series || !panel.series->series()) return data;
  data->label = series_name(*host_.data_set(), *panel.series->ref());
  data->steps = interpolation_of(*host_.data_set(), *panel.series->ref()) != interpolation_linear;
  return data;
}

void editor::GraphButtonClick(editor_panel& panel) {
  if (!may_go_on()) return;
  auto data = graph_data(panel);
  if (!data) return set_message("Nothing to draw: no values.");
  auto graph = std::make_shared<TGraphForm>();
  graph->add_series(std::move(data));
  host_.questions().show_graph(std::move(graph), *this);
}

void editor::ImportButtonClick(editor_panel& panel) {
  if (!may_go_on() || !panel.series) return;
  if (!panel.series->series()) return set_message("Choose a series first.");
  TImportTimeSeriesForm& dialog = host_.import_form();
  dialog.begin(*panel.series->ref(), caption());
  const bool by_ok = host_.questions().show_form(dialog);
  panel.table.display_rows();
  refresh_series();
  ages_.forget();
  refresh_tree();                                                      // a mark for a newer source disappears
  if (by_ok && !dialog.report().empty()) set_message(dialog.report()); // else one that came meanwhile stays
  refresh_texts();
}

void editor::keep_these_points(editor_panel& panel) {
  if (!may_go_on() || !panel.series || !panel.series->is_deferred()) return;
  history_step step(panel.table, "Keep these points");
  edit_series(*host_.data_set(), *panel.series->ref()).query.edit().deferred = false;
  step.end();
  set_message("The query is kept, but runs no longer execute it.");
}

void editor::edit_points(editor_panel& panel, const std::string& label,
                         const std::function<void(point_list&)>& change) {
  history_step step(panel.table, label);
  change(edit_series(*host_.data_set(), *panel.series->ref()).points);
  panel.table.display_rows();
  step.end();
}

void editor::regular_times_click(editor_panel& panel) {
  if (!may_go_on() || !panel.series || !panel.series->series()) return;
  regular_times_.begin(*host_.data_set());
  const std::uint64_t generation = host_.generation();
  if (!host_.questions().show_form(regular_times_) || host_.generation() != generation) return;
  edit_points(panel, "Regular times", [this](point_list& points) {
    sort_by_moment(points);
    add_regular_times(points, regular_times_.times());
  });
}

void editor::interpolate_between(editor_panel& panel) {
  if (!may_go_on() || !panel.series || !panel.series->series()) return;
  const cell_range rows = panel.table.selection();
  if (rows.rows() < 3)
    return set_message("Select at least three rows. The values between the first and the last are interpolated.");
  edit_points(panel, "Interpolate between",
              [&](point_list& points) { vesk::interpolate_between(points, rows.top, rows.bottom); });
}

// Searches from the last mark to the end of its panel, then the other panels from the top, then this panel from the
// top. The tree comes last, if no cell is marked.
void editor::go_to_next_mark() {
  if (!may_go_on()) return;
  for (std::size_t i = 0; i <= panels_.size(); ++i) {
    const std::size_t place = (marked_panel_ + i) % panels_.size();
    if (!panels_[place]->table.go_to_next_mark(i > 0)) continue;
    marked_panel_ = place;
    if (view_) view_->go_to_panel(*panels_[place]);
    return;
  }
  if (tree() && select_next_node(
                    [this](const editor_tree::node& at) { return at.item && tree()->item_mark(*at.group, *at.item); }))
    return;
  set_message("No cell is marked.");
}

bool editor::has_names() const {
  return named_panel(nullptr) != nullptr;
}

// The nearest one at or before the focused one, since the grids go from master to detail.
editor_panel* editor::named_panel(const editor_panel* focused) const {
  editor_panel* named = nullptr;
  bool is_past = !focused;
  for (const auto& panel : panels_) {
    if (name_column(*panel)) named = panel.get();
    is_past = is_past || panel.get() == focused;
    if (named && is_past) break;
  }
  return named;
}

void editor::find_next(editor_panel* focused, const std::string& wanted) {
  if (!may_go_on()) return;
  if (wanted.empty()) return set_message("Type part of the name to find.");
  bool found = false;
  if (tree() && (!focused || !name_column(*focused))) {
    found = find_in_tree(wanted);
  } else {
    editor_panel* named = named_panel(focused);
    if (!named) return set_message("There are no names here.");
    found = find_in_grid(*named, focused, wanted);
  }
  if (!found) set_message("No name contains \"" + wanted + "\".");
}

// Searches from the active row. Pages with shared rows show the row on the current page.
bool editor::find_in_grid(editor_panel& panel, const editor_panel* focused, const std::string& wanted) {
  TFillCalcTable& table = panel.table;
  const std::size_t column = *name_column(panel);
  const auto name = [&](std::size_t row) { return table.text(row, column); };
  const auto found = find_name(table.content().row_count(), table.active_row() + 1, name, wanted);
  if (!found) return false;
  table.set_selection(std::nullopt);
  table.set_active(*found, &panel == focused ? table.active_column() : column);
  const bool shares_rows =
      focused && focused->table.active_row() == *found && focused->table.row_limit() == table.row_limit();
  if (view_ && !shares_rows) view_->go_to_panel(panel);
  return true;
}

bool editor::find_in_tree(const std::string& wanted) {
  editor_tree& nodes = *tree();
  return select_next_node([&](const editor_tree::node& at) {
    const std::string name = at.item ? nodes.item_text(*at.group, *at.item) : nodes.group_text(*at.group);
    return contains_in_any_case(shown_text(name), wanted);
  });
}

// Visits groups and items in display order, starting after the selected one and wrapping around.
bool editor::select_next_node(const std::function<bool(const editor_tree::node&)>& is_wanted) {
  editor_tree& nodes = *tree();
  std::vector<std::size_t> begins; // first position of each group
  std::size_t count = 0;
  for (std::size_t group = 0; group < nodes.group_count(); ++group) {
    begins.push_back(count);
    count += 1 + nodes.item_count(group);
  }
  std::size_t from = 0;
  if (const auto& now = nodes.selected(); now && now->group && *now->group < begins.size())
    from = begins[*now->group] + (now->item ? *now->item + 1 : 0) + 1;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t place = (from + i) % count;
    const auto group = static_cast<std::size_t>(std::ranges::upper_bound(begins, place) - begins.begin()) - 1;
    const std::size_t within = place - begins[group];
    const editor_tree::node at{group, within == 0 ? std::nullopt : std::optional(within - 1)};
    if (!is_wanted(at)) continue;
    nodes.select(at);
    refresh_tree();
    return true;
  }
  return false;
}

// The network window.

void editor::NetworkButtonClick() {
  host_.questions().show_network();
}

void editor::go_to_segment(std::size_t segment) {
  const prevesk_dataset_data_type* data = host_.data_set();
  if (!data || segment >= data->segments.size() || !may_go_on()) return;
  if (!select_segment(segment))
    set_message("No row here refers to segment " + std::to_string(segment + 1) + " (" +
                shown_text(data->segments[segment].name) + ").");
}

void editor::go_to_row(editor_panel& panel, std::size_t row) {
  panel.table.set_selection(std::nullopt);
  panel.table.set_active(row, panel.table.active_column());
  if (view_) view_->go_to_panel(panel);
}

// Files.

void editor::export_csv(editor_panel& panel) {
  if (!may_go_on()) return;
  if (panel.table.is_shown_as_empty()) return set_message("There is nothing to export.");
  const std::uint64_t generation = host_.generation();
  const auto name = host_.questions().ask_file(
      {file_dialog::kind::save, "Export as CSV", "CSV tables|*.csv|All files|*.*", "csv", ".csv"});
  if (!name || host_.generation() != generation) return;
  try {
    safe_file file(*name);
    write_csv(panel.table.content(), [&](std::string_view piece) { write_all(file.descriptor(), piece, {}, *name); });
    file.commit();
  } catch (const file_exception& error) {
    return say("Export", error.what());
  }
  set_message("Exported: " + counted(panel.table.content().row_count(), "row") + " to " + *name + ".");
}

bool editor::has_source(const editor_panel& panel) const {
  const stored_series* series = panel.series ? panel.series->series() : nullptr;
  return series && !series->query->file_name.empty();
}

void editor::refresh_from_source(editor_panel& panel) {
  if (!may_go_on() || !has_source(panel)) return;
  constexpr const char* label = "Refresh this series";
  const series_ref ref = *panel.series->ref();
  const stored_series& series = *panel.series->series();
  const import_query_descriptor query = *series.query;
  const std::uint64_t generation = host_.generation();
  std::optional<filling> filled;
  try {
    filled = host_.with_progress(
        "Reading " + query.file_name,
        [query, points = series.points, folder = host_.data_folder()](prevesk_dataset_data_type& data, work_progress&) {
          return refreshed(query, folder, data, points);
        });
  } catch (const std::exception& error) {
    return say(label, as_sentence(error.what()) + " The series is unchanged.");
  }
  // data_set_replaced has already set its message.
  if (host_.generation() != generation) return;
  if (!filled) return set_message("Cancelled. The series is unchanged.");
  const std::string outcome = as_sentence(in_words("Refreshed", query, filled->report));
  if (filled->report.points == 0) return say(label, outcome + " The series is unchanged.");
  const bool is_same = filled->points == panel.series->series()->points;
  if (!is_same) edit_points(panel, label, [&](point_list& points) { points = std::move(filled->points); });
  edit_series(*host_.data_set(), ref).filled = filled->report.as_of;
  ages_.forget();
  refresh_tree(); // the mark disappears
  set_message(outcome + (is_same ? " The points are the same as before." : ""));
}

void editor::undo() {
  take_step("Undone", host_.undo_label(), &editor_host::undo);
}

void editor::redo() {
  take_step("Redone", host_.redo_label(), &editor_host::redo);
}

// The label of a step begins with the window's caption, which the window need not repeat.
void editor::take_step(const std::string& done, std::string label, void (editor_host::*step)()) {
  if (!may_go_on() || label.empty()) return;
  {
    const during own_step(takes_step_);
    (host_.*step)();
  }
  if (const std::string prefix = caption() + ": "; label.starts_with(prefix)) label.erase(0, prefix.size());
  set_message(done + ": " + label + "." + (message_.empty() ? "" : " " + message_)); // the step may have set one
}

// Texts.

std::string editor::status(const editor_panel& panel) const {
  if (panel.table.refused()) return refusal_of_entry(panel) + " Correct it, or press Escape for the old value.";
  if (panel.table.is_shown_as_empty() && !panel.empty_hint.empty()) return panel.empty_hint;
  if (!panel.series) return {};
  const bool block = !(panel.table.selection() == cell_range{panel.table.active_row(), panel.table.active_column(),
                                                             panel.table.active_row(), panel.table.active_column()});
  std::string text = panel.series->summary(block ? std::optional(panel.table.selection()) : std::nullopt);
  if (panel.series->series() && host_.data_set()) {
    const std::string finding = series_finding(*host_.data_set(), *panel.series->ref());
    if (!finding.empty()) text += (text.empty() ? "" : text.ends_with('.') ? " " : ". ") + finding;
  }
  return text;
}

std::string editor::source_note(const editor_panel& panel) const {
  const stored_series* series = panel.series ? panel.series->series() : nullptr;
  return series ? source_age(*series) : std::string();
}

std::string editor::source_age(const stored_series& series) const {
  return ages_.sentence(series, host_.data_set()->origin);
}

std::string editor::deferred_note(const editor_panel& panel) const {
  if (!panel.series || !panel.series->is_deferred()) return {};
  return "Filled by its query before each run. Changes made here do not affect a run.";
}

} // namespace vesk
