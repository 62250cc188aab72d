#include "editors/import_time_series_form.h"

#include "charts/graph_form.h"
#include "editors/history_step.h"
#include "platform/counted.h"
#include "query/query_log.h"
#include "query/source_file.h"

#include <algorithm>

namespace vesk {

namespace {

namespace fs = std::filesystem;

constexpr const char* error_title = "Error";
constexpr const char* import_error_title = "Import error";

const file_dialog source_dialog{
    file_dialog::kind::open, "Select file",
    "All recognized types|*.db;*.dbf;*.xls;*.mdb;*.xlsx;*.ods;*.accdb;*.sqlite;*.csv;*.tsv;*.txt|"
    "DBase Tables (*.dbf)|*.dbf|Excel Spreadsheets (*.xls)|*.xls|Access Databases (*.mdb)|*.mdb|"
    "Paradox Tables (*.db)|*.db|"
    "Excel Workbooks (*.xlsx)|*.xlsx|OpenDocument Spreadsheets (*.ods)|*.ods|"
    "Access 2007 Databases (*.accdb)|*.accdb|SQLite Databases (*.sqlite;*.db)|*.sqlite;*.db|"
    "Text Tables (*.csv;*.tsv;*.txt)|*.csv;*.tsv;*.txt|All Files (*)|*",
    ""};

using query = import_query_descriptor;

constexpr import_option option_rows[] = {
    {"RestrictDateRangeCheckBox", "Restrict query date range to model input date range",
     &query::restrict_to_run_period},
    {"AverageDuplicatesCheckBox", "Average duplicate records", &query::average_duplicates},
    {"ReplaceExistingCheckBox", "Replace existing records", &query::replace_existing},
    {"DeferImportCheckBox", "Defer import of data until model is run", &query::deferred},
    {"DrillDownCheckBox", "Drill down", nullptr,
     "The values offered for a condition are those that match the other conditions, as of when its row is "
     "inserted or its field is chosen."},
};

std::optional<std::size_t> position_of(const std::vector<std::string>& names, const std::string& name) {
  const auto found = std::ranges::find(names, name);
  return found == names.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - names.begin()));
}

// After a change of table, chooses the query's own field if the table has it, else the one with the usual name, else
// keeps the query's own.
void choose_field(const import_query& source, std::string& field, std::string_view usual_name) {
  if (position_of(source.field_names, field)) return;
  for (const std::string& name : source.field_names)
    if (equal_ignoring_case(name, usual_name)) field = name;
}

void choose_fields(import_query& source) {
  choose_field(source, source.stored.date_time_field, "DATE_TIME");
  choose_field(source, source.stored.value_field, "RESULT");
}

// A query that names no fields yet gets the usual ones, as if chosen.
void read_lists(import_query& source) {
  source.read_lists();
  if (source.stored.date_time_field.empty()) choose_field(source, source.stored.date_time_field, "DATE_TIME");
  if (source.stored.value_field.empty()) choose_field(source, source.stored.value_field, "RESULT");
}

void take_table(import_query& source, const std::string& table) {
  source.set_table(table);
  source.clear_conditions();
  choose_fields(source);
}

std::unique_ptr<general_graph_data> graph_of(const point_list& points) {
  auto data = std::make_unique<general_graph_data>(static_cast<std::int32_t>(points.size()));
  for (std::size_t i = 0; i < points.size(); ++i) {
    data->x[i] = points[i].days_since(days_to_1970);
    data->y[i] = points[i].value;
  }
  return data;
}

} // namespace

TImportTimeSeriesForm::TImportTimeSeriesForm(editor_host& host)
    : conditions_(working_query, [this] { return ConditionTable.active_row(); }), host_(host) {
  conditions_.OnValuesWanted = [this](std::size_t row) {
    const auto read = [this, row] { refresh_values(row); };
    later ? later(read) : read();
  };
  ConditionTable.OnEndChange = [this](bool) { changed(); };
  ConditionTable.OnEnteringRow = [this](std::size_t) { changed(); };
}

std::span<const import_option> TImportTimeSeriesForm::options() {
  return option_rows;
}

void TImportTimeSeriesForm::begin(const series_ref& target, std::string editor_caption) {
  target_ = target;
  identity_ = identity_of(*host_.data_set(), target_);
  series_name_ = vesk::series_name(*host_.data_set(), target_);
  editor_caption_ = std::move(editor_caption);
  working_query = import_query(stored_query(), host_.data_folder());
  message_.clear();
  report_.clear();
  ConditionTable.give_up_refused();
  clear_results();
  show_lists();
}

// Background reads.

template <class Work>
auto TImportTimeSeriesForm::work_on_query(const char* title, Work work, read_stops stops) {
  using value = std::invoke_result_t<Work&, import_query&, const prevesk_dataset_data_type&>;
  struct outcome {
    import_query worked_on;
    value result;
  };
  message_.clear();
  import_query copy = working_query; // includes the source, which need not be reopened
  copy.engine.take_connection(working_query.engine);
  const std::string what = "Reading " + copy.stored.file_name;
  const std::uint64_t generation = host_.generation();
  std::optional<value> result;
  try {
    auto came = host_.with_progress(what, [copy = std::move(copy), work = std::move(work)](
                                              prevesk_dataset_data_type& data, work_progress&) mutable {
      value made = work(copy, data);
      return outcome{std::move(copy), std::move(made)};
    });
    if (came) {
      working_query = std::move(came->worked_on);
      result.emplace(std::move(came->result));
    } else if (host_.generation() == generation) {
      message_ = std::move(stops.when_cancelled);
    } else {
      message_ = std::move(stops.when_replaced);
    }
  } catch (const std::exception& error) {
    host_.questions().message_box(title, error.what(), box_buttons::ok);
  }
  show_lists();
  return result;
}

// An incomplete query is not an error here. The command that needs the source reports failures.
// What was read before it is kept: the tables of a workbook are shown even if the query's own is not among them.
void TImportTimeSeriesForm::FormShow() {
  if (working_query.stored.file_name.empty()) return say("Select the file that holds the data.");
  const auto is_read = work_on_query(error_title,
                                     [](import_query& source, const prevesk_dataset_data_type&) {
                                       try {
                                         read_lists(source);
                                         return true;
                                       } catch (const query_exception&) {
                                         return false;
                                       }
                                     },
                                     {"Cancelled. The table was not read; Run query reads it.",
                                      "The data set was replaced while the table was read. Run query reads it."});
  if (is_read && !*is_read) say("The table could not be read. Run query shows why.");
}

// While refused, a condition shows the typed text but keeps its old value.
bool TImportTimeSeriesForm::nothing_is_refused() {
  const auto& refused = ConditionTable.refused();
  if (!refused) return true;
  ConditionTable.set_active(refused->row, refused->column);
  changed();
  if (OnRefusal) OnRefusal();
  return false;
}

bool TImportTimeSeriesForm::open_source(const std::string& file_name) {
  clear_results();
  return work_on_query(error_title,
                       [file_name](import_query& source, const prevesk_dataset_data_type&) {
                         source.set_file(file_name);
                         if (source.source_kind == source_several_tables)
                           take_table(source, source.tables.empty() ? "" : source.tables.front());
                         source.clear_conditions();
                         choose_fields(source);
                         return true;
                       })
      .has_value();
}

void TImportTimeSeriesForm::refresh_values(std::size_t condition) {
  if (condition >= working_query.stored.conditions.size()) return;
  const std::string typed = working_query.stored.conditions[condition].value_text;
  const std::string field = working_query.stored.conditions[condition].field_name;
  trace_query("TCT_VALUES FOR ROW" + std::to_string(condition + 1) + ", FIELD:" + field +
              "with that=" + working_query.stored.name);
  const auto has_value = work_on_query(error_title,
                                       [condition](import_query& source, const prevesk_dataset_data_type&) {
                                         source.refresh_values(condition);
                                         return source.choices[condition].selected_value >= 0;
                                       },
                                       {"Cancelled. The values of " + field + " were not read."});
  if (has_value && !*has_value && !typed.empty()) say(field + " has no value \"" + typed + "\" in this table.");
}

// What is shown.

void TImportTimeSeriesForm::show_lists() {
  ConditionTable.display_rows();
  changed();
}

void TImportTimeSeriesForm::clear_results() {
  has_results_ = false;
  results_.show({});
  ResultsTable.show(results_);
}

void TImportTimeSeriesForm::changed() const {
  if (OnChange) OnChange();
}

void TImportTimeSeriesForm::say(std::string message) {
  message_ = std::move(message);
  changed();
}

std::optional<std::size_t> TImportTimeSeriesForm::table() const {
  return find_table_name(working_query.tables, working_query.stored.table_name);
}

std::optional<std::size_t> TImportTimeSeriesForm::date_time_field() const {
  return position_of(working_query.field_names, working_query.stored.date_time_field);
}

std::optional<std::size_t> TImportTimeSeriesForm::value_field() const {
  return position_of(working_query.field_names, working_query.stored.value_field);
}

bool TImportTimeSeriesForm::is_on(const import_option& option) const {
  return option.member ? working_query.stored.*option.member : working_query.drill_down;
}

std::string TImportTimeSeriesForm::sql() const {
  try {
    return working_query.build_sql(*host_.data_set());
  } catch (const query_exception& error) { // a number in a condition that cannot be parsed
    return error.what();
  }
}

std::string TImportTimeSeriesForm::sql_hint() const {
  const bool is_unread = !working_query.stored.file_name.empty() && working_query.field_names.empty();
  return is_unread ? "The table has not been read. Run query reads it, or shows why it cannot."
                   : "Choose a value for each condition.";
}

std::string TImportTimeSeriesForm::message() const {
  const auto& refused = ConditionTable.refused();
  if (!refused) return message_;
  return "Condition " + std::to_string(refused->row + 1) + ": " + refused->reason +
         ". Correct it, or press Escape for the old value.";
}

std::string TImportTimeSeriesForm::value_note() const {
  const std::size_t row = ConditionTable.active_row();
  if (working_query.stored.conditions.empty()) return "No conditions: all rows are used.";
  if (row >= working_query.choices.size() || working_query.choices[row].value_count <= most_listed) return {};
  return working_query.stored.conditions[row].field_name + ": the first " + std::to_string(most_listed) + " of " +
         std::to_string(working_query.choices[row].value_count) + " values are listed; others can be typed.";
}

std::string TImportTimeSeriesForm::results_note() const {
  if (!has_results_) return "Results: choose Run query to see the rows.";
  const shown_rows& rows = results_.rows();
  if (rows.total == 0) return "Results: no rows";
  if (rows.total <= rows.row_count()) return "Results: " + counted(rows.total, "row");
  return "Results: the first " + std::to_string(rows.row_count()) + " of " + counted(rows.total, "row");
}

void TImportTimeSeriesForm::data_set_replaced() {
  if (has_target()) say("A job has replaced the data set. Your query is kept.");
}

// Controls.

void TImportTimeSeriesForm::NameEditChange(const std::string& name) {
  working_query.stored.name = name;
}

// A source in or below the data file's folder can move together with it.
std::string TImportTimeSeriesForm::name_to_store(const std::string& file) const {
  const fs::path folder = host_.data_folder();
  if (folder.empty()) return file;
  const fs::path relative =
      fs::absolute(file).lexically_normal().lexically_relative(fs::absolute(folder / "").lexically_normal());
  return relative.empty() || *relative.begin() == ".." ? file : relative.string();
}

void TImportTimeSeriesForm::BrowseButtonClick() {
  if (!nothing_is_refused()) return;
  const std::uint64_t generation = host_.generation();
  const auto file = host_.questions().ask_file(source_dialog);
  if (file && host_.generation() == generation) open_source(name_to_store(*file));
}

bool TImportTimeSeriesForm::FileNameEditChange(const std::string& name) {
  return name == working_query.stored.file_name || (nothing_is_refused() && open_source(name));
}

void TImportTimeSeriesForm::TableListChange(std::size_t position) {
  if (position >= working_query.tables.size() || position == table() || !nothing_is_refused()) return;
  clear_results();
  work_on_query(error_title,
                [name = working_query.tables[position]](import_query& source, const prevesk_dataset_data_type&) {
                  take_table(source, name);
                  return true;
                });
}

void TImportTimeSeriesForm::DateTimeFieldChange(std::size_t position) {
  if (!nothing_is_refused()) return;
  if (position < working_query.field_names.size())
    working_query.stored.date_time_field = working_query.field_names[position];
  changed();
}

void TImportTimeSeriesForm::ValueFieldChange(std::size_t position) {
  if (!nothing_is_refused()) return;
  if (position < working_query.field_names.size())
    working_query.stored.value_field = working_query.field_names[position];
  changed();
}

void TImportTimeSeriesForm::OptionClick(const import_option& option, bool on) {
  if (!nothing_is_refused()) return;
  (option.member ? working_query.stored.*option.member : working_query.drill_down) = on;
  changed();
}

void TImportTimeSeriesForm::InsertButtonClick() {
  if (!nothing_is_refused()) return;
  working_query.insert_condition();
  const std::size_t row = working_query.stored.conditions.size() - 1;
  ConditionTable.display_rows();
  ConditionTable.set_active(row, condition_grid::field_column);
  refresh_values(row);
}

void TImportTimeSeriesForm::DeleteButtonClick() {
  if (!nothing_is_refused()) return;
  const std::size_t row = ConditionTable.active_row();
  if (row >= working_query.stored.conditions.size()) return say("No condition to delete.");
  working_query.remove_condition(row);
  message_.clear();
  show_lists();
}

void TImportTimeSeriesForm::RunQueryButtonClick() {
  if (!nothing_is_refused()) return;
  clear_results();
  auto rows = work_on_query(error_title, [](import_query& source, const prevesk_dataset_data_type& data) {
    if (source.field_names.empty()) read_lists(source); // the first reading has failed or was cancelled
    return read_shown_rows(source, data);
  });
  if (!rows) return;
  results_.show(std::move(*rows));
  has_results_ = true;
  ResultsTable.show(results_);
  changed();
}

void TImportTimeSeriesForm::ResetAllButtonClick() {
  if (!nothing_is_refused()) return;
  query fresh;
  fresh.name = working_query.stored.name;
  working_query = import_query(std::move(fresh), host_.data_folder());
  message_.clear();
  clear_results();
  show_lists();
}

void TImportTimeSeriesForm::GraphButtonClick() {
  if (!nothing_is_refused()) return;
  const auto points =
      work_on_query(import_error_title, [](import_query& source, const prevesk_dataset_data_type& data) {
        point_list filled;
        source.execute(data, filled);
        return filled;
      });
  if (!points) return;
  if (points->empty()) return say("Nothing to draw: the query found no values.");
  auto data = graph_of(*points);
  data->label = working_query.stored.name;
  data->steps = interpolation_of(*host_.data_set(), target_) != interpolation_linear;
  auto graph = std::make_shared<TGraphForm>();
  graph->add_series(std::move(data));
  host_.questions().show_graph(std::move(graph), *this);
}

void TImportTimeSeriesForm::copy_results(bool with_headers) {
  if (nothing_is_refused() && has_results_) host_.questions().set_clipboard_text(ResultsTable.do_copy(with_headers));
}

// Closing.

// A job's data set may have the series elsewhere, with another one in its position.
bool TImportTimeSeriesForm::has_target() {
  const auto found = find_series(*host_.data_set(), identity_);
  if (!found) {
    say("A job has replaced the data set, which no longer contains this series. Choose Cancel.");
    return false;
  }
  target_ = *found;
  series_name_ = vesk::series_name(*host_.data_set(), target_);
  return true;
}

bool TImportTimeSeriesForm::ImportButtonClick() {
  if (!nothing_is_refused() || !has_target()) return false;
  const std::uint64_t generation = host_.generation();
  const bool deferred = working_query.stored.deferred;
  const box_answer answer =
      deferred
          ? host_.questions().message_box(
                "Confirm Live Query",
                "You have selected the \"Import data when model is run\" checkbox.\r\n"
                "As a result, the data will not be imported now but instead during the model run.\r\n"
                "Click OK to continue, or click Cancel to change this now",
                box_buttons::ok_cancel)
          : host_.questions().message_box("Confirm Immediate Query",
                                          "You have not selected the \"Import data when model is run\" checkbox.\r\n"
                                          "As a result, the data will be imported now and not during the model run.\r\n"
                                          "Click OK to continue, or click Cancel to change this now",
                                          box_buttons::ok_cancel);
  if (answer != box_answer::ok || host_.generation() != generation) return false;
  clear_results();
  if (deferred) {
    // Stored whatever comes of it: the file may be written only later.
    const auto fault = work_on_query(import_error_title, [](import_query& source, const prevesk_dataset_data_type&) {
      try {
        source.validate();
        return std::string();
      } catch (const query_exception& error) {
        return std::string(error.what());
      }
    });
    if (!fault) return false;
    report_ = fault->empty() ? "The query is stored. It fills the series before each run."
                             : "The query is stored, but it would fail now: " + *fault +
                                   (fault->ends_with('.') ? "" : ".") + " No run starts before it is corrected.";
    store("Import");
    return true;
  }
  auto filled = work_on_query(import_error_title,
                              [points = target_points()](import_query& source, const prevesk_dataset_data_type& data) {
                                filling made{points, {}};
                                made.report = source.execute(data, made.points);
                                return made;
                              });
  if (!filled) return false;
  report_ = in_words("Imported", working_query.stored, filled->report) + (filled->report.rows > 0 ? "." : "");
  const std::size_t removed = filled->points.empty() ? target_points().size() : 0;
  if (removed > 0)
    report_ += " " + counted(removed, "point") +
               (removed == 1 ? " was removed; Undo restores it." : " were removed; Undo restores them.");
  store("Import", std::move(filled));
  return true;
}

bool TImportTimeSeriesForm::FormCloseQuery(bool by_ok) {
  if (!by_ok) return true;
  if (!nothing_is_refused() || !has_target()) return false;
  store("Query");
  return true;
}

const import_query_descriptor& TImportTimeSeriesForm::stored_query() const {
  return *find_series(*host_.data_set(), target_)->query;
}

const point_list& TImportTimeSeriesForm::target_points() const {
  return find_series(*host_.data_set(), target_)->points;
}

// One step of the history, including the sorting of the points.
void TImportTimeSeriesForm::store(const char* label, std::optional<filling> filled) {
  query present = in_utf8(stored_query(), host_.data_folder()); // as it was when the dialog was opened
  // Opening a file that is one table also stores the file's name as the table; that alone is not a change.
  if (working_query.source_kind == source_one_table && present.file_name == working_query.stored.file_name)
    present.table_name = working_query.stored.table_name;
  const bool is_other_query = present != working_query.stored;
  point_list points = target_points();
  if (filled) points = std::move(filled->points);
  sort_by_moment(points);
  const bool is_step = is_other_query || points != target_points();
  std::optional<history_step> step;
  if (is_step) step.emplace(host_, editor_caption_ + ": " + label);
  if (filled) edit_series(*host_.data_set(), target_).filled = filled->report.as_of;
  if (!step) return;
  edit_series(*host_.data_set(), target_).points = std::move(points);
  if (is_other_query) edit_series(*host_.data_set(), target_).query.edit() = working_query.stored;
  step->end();
}

} // namespace vesk
