#include "query/import_query.h"

#include "query/query_log.h"
#include "query/sql/select_statement.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>

namespace vesk {

namespace {

constexpr const char* conjunctions[] = {"AND", "OR"};
constexpr const char* comparisons[] = {"=", "<", "<=", ">", ">="};

// The word for a stored number; what is damaged in a file is refused.
template <std::size_t N>
const char* word_of(const char* const (&words)[N], std::uint32_t number, const import_query_descriptor& query,
                    const char* what) {
  if (number < N) return words[number];
  throw query_validation_exception("Query '" + query.name + "' has a condition with the unknown " + what + " " +
                                   std::to_string(number));
}

// ">=" and its like with a moment of the model: the date, and the time behind it.
std::string period_bound(const std::string& field, const char* comparison, const moment_type& moment,
                         bool several_tables) {
  const std::string quote(1, literal_quote(field_type::date_time, several_tables));
  std::string text = date_time_text(moment);
  if (!several_tables) text.insert(text.find(' '), ",");
  return field + comparison + quote + text + quote;
}

// Points of rows that follow one another, one for each row or one for each moment. They begin at a place in a list, and
// take the place of what stands there.
class point_maker {
public:
  point_maker(point_list& points, std::size_t place, bool average) : points_(points), next_(place), average_(average) {}

  void add(double moment, double value) {
    if (!average_) return put(moment, value);
    if (moment != previous_moment_) end_moment();
    previous_moment_ = moment;
    sum_ += value;
    ++count_;
  }
  void finish() {
    end_moment();
    end_list();
  }

  // Takes what stands behind the points off the list.
  void end_list() {
    if (next_ < points_.size()) points_.erase(next_, points_.size() - next_);
  }

private:
  void end_moment() {
    if (count_ != 0) put(previous_moment_, sum_ / static_cast<double>(count_));
    sum_ = 0;
    count_ = 0;
  }
  void put(double moment, double value) {
    const moment_value_pair_type point(moment_type::from_date_time(moment), value);
    if (next_ < points_.size())
      points_.set(next_, point);
    else
      points_.push_back(point);
    ++next_;
  }

  point_list& points_;
  std::size_t next_;
  const bool average_;
  double sum_ = 0, previous_moment_ = 0;
  std::uint64_t count_ = 0;
};

} // namespace

void import_query::set_file(const std::string& name) {
  stored.file_name = name;
  source_kind = engine.kind_of(name);
  tables.clear();
  if (source_kind == source_several_tables)
    tables = engine.list_tables(*this);
  else
    set_table(name);
}

void import_query::set_table(const std::string& name) {
  stored.table_name = name;
  field_names.clear();
  field_types.clear();
  if (name.empty()) return;
  auto rows = engine.open(*this, "SELECT * FROM " + quoted_table());
  for (const table_field& field : rows->fields()) {
    field_names.push_back(field.name);
    field_types.push_back(field.type);
  }
  rows.reset();
  engine.disconnect(*this);
}

std::string import_query::quoted_table() const {
  return source_kind == source_one_table ? "'" + stored.table_name + "'" : "[" + stored.table_name + "]";
}

std::size_t import_query::field_position(const std::string& field) const {
  const auto found = std::find(field_names.begin(), field_names.end(), field);
  if (found == field_names.end())
    throw query_validation_exception("Query '" + stored.name + "' contains reference to non-existent field '" + field +
                                     "'");
  return static_cast<std::size_t>(found - field_names.begin());
}

void import_query::validate() {
  validate(&import_query::refresh_values);
}

void import_query::validate(void (import_query::*read_values)(std::size_t)) {
  if (stored.file_name.empty()) throw query_validation_exception("File name not set");
  const std::string table = stored.table_name; // of a source of several tables; the file is it otherwise
  set_file(std::string(stored.file_name));
  if (source_kind == source_several_tables) stored.table_name = table;
  if (stored.table_name.empty()) throw query_validation_exception("Table name not set");
  if (source_kind == source_several_tables) set_table(table);
  if (stored.date_time_field.empty()) throw query_validation_exception("Date/Time field not set");
  field_position(stored.date_time_field);
  if (stored.value_field.empty()) throw query_validation_exception("Value field not set");
  field_position(stored.value_field);
  choices.resize(stored.conditions.size());
  for (std::size_t i = 0; i < stored.conditions.size(); ++i) {
    const query_condition& condition = stored.conditions[i];
    condition_choice& choice = choices[i];
    choice.field_index = field_position(condition.field_name);
    (this->*read_values)(i);
    choice.selected_value = -1;
    const auto found = std::find(choice.values.begin(), choice.values.end(), condition.value_text);
    if (found == choice.values.end())
      throw query_validation_exception("Query '" + stored.name + "' contains query condition on field '" +
                                       condition.field_name + "' which has no selected value");
    choice.selected_value = static_cast<std::int32_t>(found - choice.values.begin());
  }
}

// Conditions are added and fields and lists change between one validation and the next.
bool import_query::has_value(std::size_t i) const {
  if (i >= choices.size() || choices[i].selected_value < 0) return false;
  return static_cast<std::size_t>(choices[i].selected_value) < choices[i].values.size() &&
         choices[i].field_index < field_types.size();
}

std::string import_query::condition_term(std::size_t i) const {
  const query_condition& condition = stored.conditions[i];
  const condition_choice& choice = choices[i];
  std::string term = condition.field_name + word_of(comparisons, condition.comparison, stored, "comparison");
  const std::string& value = choice.values[static_cast<std::size_t>(choice.selected_value)];
  const char quote = literal_quote(field_types[choice.field_index], source_kind == source_several_tables);
  return quote == '\0' ? term + value : term + quote + value + quote;
}

std::string import_query::build_sql(const prevesk_dataset_data_type& data) const {
  std::string sql = "SELECT * FROM " + quoted_table();
  for (std::size_t i = 0; i < stored.conditions.size(); ++i) {
    if (!has_value(i)) return {};
    sql += i == 0 ? " WHERE ("
                  : " " + std::string(word_of(conjunctions, stored.conditions[i].conjunction, stored, "conjunction")) +
                        " ";
    sql += condition_term(i);
  }
  if (!stored.conditions.empty()) sql += ")";
  const std::string& moment = stored.date_time_field;
  if (stored.restrict_to_run_period && !moment.empty()) {
    const bool several_tables = source_kind == source_several_tables;
    sql += stored.conditions.empty() ? " WHERE (" : " AND (";
    sql += period_bound(moment, ">=", moment_type::from_date_time(data.start_date_time()), several_tables);
    const point_list& steps = data.time_steps.points;
    if (!steps.empty()) sql += " AND " + period_bound(moment, "<=", steps[steps.size() - 1], several_tables);
    sql += ")";
  }
  if (!moment.empty()) sql += " ORDER BY " + moment;
  return sql;
}

std::unique_ptr<result_set> import_query::open_values(std::size_t condition, const std::string& tail) {
  const std::string& field = stored.conditions[condition].field_name;
  if (choices.size() < stored.conditions.size()) choices.resize(stored.conditions.size());
  choices[condition].values.clear();
  std::string sql = "SELECT DISTINCT " + field + " FROM " + quoted_table();
  std::vector<std::string> compared = {stored.conditions[condition].value_text}; // in the tail, if it has a term
  if (stored.conditions.size() > 1 && drill_down) {
    std::string terms;
    for (std::size_t i = 0; i < stored.conditions.size(); ++i) {
      if (i == condition || !has_value(i)) continue;
      if (!terms.empty())
        terms +=
            " " + std::string(word_of(conjunctions, stored.conditions[i].conjunction, stored, "conjunction")) + " ";
      terms += condition_term(i);
    }
    if (!terms.empty()) sql += " WHERE (" + terms + ")";
    compared = literals(condition);
  }
  trace_refresh(condition);
  return engine.open(*this, sql + tail, {.literals = std::move(compared)});
}

void import_query::trace_refresh(std::size_t condition) const {
  trace_query("UPDATING VALUES FOR" + stored.conditions[condition].field_name + "with this=" + stored.name +
              "and RTItems=" + std::to_string(stored.conditions.size()));
}

void import_query::refresh_values(std::size_t condition) {
  const auto rows = open_values(condition, " ORDER BY " + stored.conditions[condition].field_name);
  while (rows->next())
    if (rows->is_comparable(0)) choices[condition].values.push_back(rows->text(0));
  engine.disconnect(*this);
}

void import_query::find_value(std::size_t condition) {
  const std::string& wanted = stored.conditions[condition].value_text;
  const field_type type = field_types[choices[condition].field_index];
  std::string tail;
  if (!drill_down && !wanted.empty() && !is_number(type) && !is_date_or_time(type)) // sources look for texts themselves
    tail = " WHERE (" + stored.conditions[condition].field_name + "='" + wanted + "')";
  const auto rows = open_values(condition, tail);
  while (rows->next())
    if (rows->is_comparable(0) && rows->text(0) == wanted) {
      choices[condition].values = {wanted};
      return;
    }
}

// Leaves the looking for it to the reading of the rows.
void import_query::take_value(std::size_t condition) {
  if (choices.size() < stored.conditions.size()) choices.resize(stored.conditions.size());
  choices[condition].values = {stored.conditions[condition].value_text};
}

std::vector<std::string> import_query::literals(std::size_t left_out) const {
  std::vector<std::string> values;
  for (std::size_t i = 0; i < stored.conditions.size(); ++i)
    if (i != left_out && has_value(i))
      values.push_back(choices[i].values[static_cast<std::size_t>(choices[i].selected_value)]);
  return values;
}

statement_use import_query::use_of_data() const {
  return {.fields = {stored.date_time_field, stored.value_field}, .literals = literals(stored.conditions.size())};
}

struct import_query::selection {
  point_list points;
  query_report report;
};

namespace {

// The moment and the value of the present row, if it makes a point.
template <class Take>
void take_row(const result_set& rows, std::size_t moment, std::size_t value, query_report& report, const Take& take) {
  ++report.rows;
  const double t = rows.is_missing(moment) ? 0 : rows.date_and_time(moment);
  if (std::floor(t) == 0)
    ++report.without_moment;
  else if (rows.is_missing(value))
    ++report.without_value; // a measurement that is missing is not one of 0
  else
    take(t, rows.floating_point(value));
}

// Makes points of rows that need not be in order of time, as those of most tables are. Rows that are not are put in
// order while they are few; more of them are for SQLite, which keeps what is too much for memory in files.
//
// The rows stand where their points will, so that a long series is in memory once.
class point_collector {
public:
  explicit point_collector(bool average) : average_(average) {}

  // False when there are too many rows out of order.
  bool add(double moment, double value) {
    constexpr std::size_t most_kept = 1 << 16;
    is_sorted_ = is_sorted_ && last_ <= moment;
    last_ = moment;
    if (!maker_ && points_.size() < most_kept) {
      points_.push_back(as_point({moment, value}));
      return true;
    }
    if (!is_sorted_) return false;
    if (!maker_) make_points();
    maker_->add(moment, value);
    return true;
  }

  point_list finish() && {
    if (!maker_) make_points();
    maker_->finish();
    points_.shrink_to_fit();
    return std::move(points_);
  }

private:
  struct row {
    double moment, value;
  };

  // A row in the place of a point: its date-time number in the bytes of the moment.
  static moment_value_pair_type as_point(const row& r) { return {std::bit_cast<moment_type>(r.moment), r.value}; }
  static row as_row(const moment_value_pair_type& point) {
    return {std::bit_cast<double>(static_cast<const moment_type&>(point)), point.value};
  }

  // A point is put where its row stood or one before it.
  void make_points() {
    const std::size_t rows = points_.size();
    if (!is_sorted_) {
      moment_value_pair_type* const first = points_.edit_data();
      std::stable_sort(first, first + rows,
                       [](const auto& a, const auto& b) { return as_row(a).moment < as_row(b).moment; });
    }
    maker_.emplace(points_, 0, average_);
    for (std::size_t i = 0; i < rows; ++i) {
      const row r = as_row(points_[i]);
      maker_->add(r.moment, r.value);
    }
    maker_->end_list();
  }

  point_list points_; // rows, until there is a maker
  const bool average_;
  std::optional<point_maker> maker_;
  double last_ = -std::numeric_limits<double>::infinity();
  bool is_sorted_ = true;
};

} // namespace

// All in one pass over the table, on which the conditions' values are looked for. Nothing when anything fails, a value
// has not been seen among the rows that were read, or the rows are far out of order.
std::optional<import_query::selection> import_query::select(const prevesk_dataset_data_type& data) try {
  if (drill_down) return {};
  validate(&import_query::take_value);
  statement_use use = use_of_data();
  use.in_any_order = true;
  for (std::size_t i = 0; i < stored.conditions.size(); ++i)
    use.sought.push_back({choices[i].field_index, stored.conditions[i].value_text});
  const auto rows = engine.open(*this, build_sql(data), use);
  const std::size_t moment = rows->position(stored.date_time_field), value = rows->position(stored.value_field);
  point_collector collector(stored.average_duplicates);
  selection result;
  bool in_order = true;
  while (in_order && rows->next())
    take_row(*rows, moment, value, result.report, [&](double t, double v) { in_order = collector.add(t, v); });
  if (!in_order || !rows->has_found_all() || !engine.is_up_to_date()) return {};
  for (std::size_t i = 0; i < stored.conditions.size(); ++i) trace_refresh(i);
  result.points = std::move(collector).finish();
  return result;
} catch (const query_exception&) {
  return {};
}

// Puts the lists of values back that a validation with shorter ones replaces.
class import_query::kept_choices {
public:
  explicit kept_choices(import_query& query) : query_(query), choices_(query.choices) {}
  ~kept_choices() {
    if (choices_.size() == query_.choices.size()) query_.choices = std::move(choices_);
  }
  kept_choices(const kept_choices&) = delete;
  kept_choices& operator=(const kept_choices&) = delete;

private:
  import_query& query_;
  std::vector<condition_choice> choices_;
};

query_report import_query::execute(const prevesk_dataset_data_type& data, point_list& points) {
  const kept_choices lists(*this);
  query_report report;
  if (std::optional<selection> selected = select(data)) {
    report = selected->report;
    report.points = selected->points.size();
    if (stored.replace_existing) {
      points = std::move(selected->points);
    } else {
      points.reserve(points.size() + selected->points.size());
      for (const auto& point : selected->points) points.push_back(point);
    }
  } else {
    // Step by step, so that what is wrong first is told first, and the points are as far as they came.
    validate(&import_query::find_value);
    const auto rows = engine.open(*this, build_sql(data), use_of_data());
    const std::size_t moment = rows->position(stored.date_time_field), value = rows->position(stored.value_field);
    if (stored.replace_existing) points.clear();
    const std::size_t before = points.size();
    point_maker maker(points, before, stored.average_duplicates);
    while (rows->next()) take_row(*rows, moment, value, report, [&](double t, double v) { maker.add(t, v); });
    maker.finish();
    if (!engine.is_up_to_date()) throw query_engine_exception(stored.file_name + ": it has changed while it was read.");
    report.points = points.size() - before;
  }
  engine.disconnect(*this);
  return report;
}

std::string in_words(const std::string& series, const import_query_descriptor& query, const query_report& report) {
  const auto counted = [](std::uint64_t count, const char* what) {
    return ", " + std::to_string(count) + " " + what + (count == 1 ? "" : "s");
  };
  std::string line = series + ": " + query.file_name;
  if (query.table_name != query.file_name && !query.table_name.empty()) line += " [" + query.table_name + "]";
  if (report.rows == 0)
    return line + ", no rows found. Check the conditions and whether it covers the time of the run.";
  line += counted(report.rows, "row") + counted(report.points, "point");
  if (report.without_moment > 0) line += counted(report.without_moment, "row") + " without a date";
  if (report.without_value > 0) line += counted(report.without_value, "row") + " without a value";
  return line;
}

bool operator==(const import_query& a, const import_query& b) {
  return a.stored == b.stored && a.source_kind == b.source_kind && a.tables == b.tables &&
         a.field_names == b.field_names && a.field_types == b.field_types && a.choices == b.choices &&
         a.drill_down == b.drill_down;
}

} // namespace vesk
