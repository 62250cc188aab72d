#include "query/sql/select_statement.h"

#include "query/sources/text/number_text.h"
#include "query/sqlite_names.h"
#include "query/value_text.h"

#include <charconv>

namespace vesk {

namespace {

constexpr const char* symbols[] = {"=", "<", "<=", ">", ">="};
constexpr const char* words[] = {" AND ", " OR "};

const char* symbol_of(term_comparison comparison) {
  return symbols[static_cast<std::size_t>(comparison)];
}
const char* word_of(term_conjunction conjunction) {
  return words[static_cast<std::size_t>(conjunction)];
}

// A term's value as it is shown: of a date field in the marks of dates, a text between apostrophes.
std::string shown_value(const std::string& value, field_type type, bool of_several) {
  if (is_number(type)) return value;
  const char mark = is_date_or_time(type) && of_several ? '#' : '\'';
  return mark + value + mark;
}

std::string shown_moment(const moment_type& moment, bool of_several) {
  std::string text = date_time_text(moment);
  if (!of_several) text.insert(text.find(' '), ",");
  return shown_value(text, field_type::date_time, of_several);
}

// Moments are whole seconds: a number means the nearest one, and in the middle the later one. The least number that
// means this moment.
double first_number_of(const moment_type& moment) {
  double before = moment.date_time() - 1 / seconds_per_day, first = moment.date_time();
  while (true) {
    const double middle = before + (first - before) / 2;
    if (middle == before || middle == first) return first;
    (moment_type::from_date_time(middle) < moment ? before : first) = middle;
  }
}

std::optional<std::int64_t> whole_number(std::string_view text) {
  std::int64_t whole = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), whole);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(whole) : std::nullopt;
}

class sqlite_printer {
public:
  explicit sqlite_printer(const select_statement& statement) : statement_(statement) {}

  sqlite_statement print(std::string_view table, const std::vector<std::string>& columns, bool in_any_order) {
    std::string sql = "SELECT ";
    if (statement_.distinct) // COLLATE: texts that differ in their case are two values
      sql += "DISTINCT " + name(statement_.distinct->name) + " COLLATE BINARY";
    else
      sql += columns.empty() ? "*" : list(columns);
    sql += " FROM " + sql_quoted(table) + " AS t" + where();
    const auto& order = statement_.distinct ? statement_.distinct : statement_.moment_field;
    if (order && !in_any_order) sql += " ORDER BY " + name(order->name);
    return {std::move(sql), std::move(values_)};
  }

private:
  static std::string name(const std::string& field) { return "t." + sql_quoted(field); }

  static std::string list(const std::vector<std::string>& columns) {
    std::string names;
    for (const std::string& field : columns) names += (names.empty() ? "" : ",") + name(field);
    return names;
  }

  std::string where() {
    std::string sql;
    for (const select_term& term : statement_.terms)
      sql += (sql.empty() ? " WHERE (" : word_of(term.conjunction)) + condition(term);
    if (!sql.empty()) sql += ")";
    if (!statement_.period || !statement_.moment_field) return sql;
    const auto& [first, last] = *statement_.period;
    sql += sql.empty() ? " WHERE " : " AND ";
    const std::string& moment = statement_.moment_field->name;
    sql += moment_condition(moment, term_comparison::greater_or_equal, first);
    if (last) sql += " AND " + moment_condition(moment, term_comparison::less_or_equal, *last);
    return sql;
  }

  // The parameter for a value.
  template <class Value>
  std::string bound(const Value& value) {
    values_.emplace_back(value);
    return "?" + std::to_string(values_.size());
  }

  std::string condition(const select_term& term) {
    const auto& [field, type] = term.field;
    if (is_date_or_time(type) || (term.field == statement_.moment_field && !is_number(type))) {
      if (const auto moment = moment_literal(term.value))
        return moment_condition(field, term.comparison, moment_type::from_date_time(*moment));
      if (is_date_or_time(type)) return no_row;
    }
    if (type == field_type::boolean) return flag_condition(term);
    if (is_number(type)) return number_condition(term);
    const std::string compared = term.value.empty() ? "ifnull(" + name(field) + ",'')" : name(field); // no text is ''
    return compared + symbol_of(term.comparison) + bound(term.value);
  }

  // Whatever is not 0 is true; some programs store 1, others -1.
  static std::string flag_condition(const select_term& term) {
    if (term.value != "True" && term.value != "False") return no_row;
    return "(" + is_not_text(term.field.name) + " AND (" + name(term.field.name) + "<>0)" + symbol_of(term.comparison) +
           (term.value == "True" ? "1)" : "0)");
  }

  std::string number_condition(const select_term& term) {
    const auto whole = whole_number(term.value); // to its last digit, which a floating-point number may not have
    const auto number = plain_number(term.value);
    if (!whole && !number) return no_row;
    const std::string compared =
        name(term.field.name) + symbol_of(term.comparison) + (whole ? bound(*whole) : bound(*number));
    const bool is_upward = term.comparison >= term_comparison::greater;
    return is_upward ? "(" + compared + " AND " + is_not_text(term.field.name) + ")" : compared;
  }

  // A text among the numbers is greater than each of them to SQLite.
  static std::string is_not_text(const std::string& field) { return name(field) + "<=9e999"; }

  std::string moment_condition(const std::string& field, term_comparison comparison, const moment_type& moment) {
    const auto from = [&](const char* symbol) { return name(field) + symbol + bound(first_number_of(moment)); };
    const auto after = [&](const char* symbol) { // 24:00:00 is a moment as well
      return name(field) + symbol + bound(first_number_of({moment.date, moment.time + 1}));
    };
    switch (comparison) {
    case term_comparison::equal: {
      const std::string first = from(">=");
      return "(" + first + " AND " + after("<") + ")";
    }
    case term_comparison::less: return from("<");
    case term_comparison::less_or_equal: return after("<");
    case term_comparison::greater: return after(">=");
    default: return from(">=");
    }
  }

  static constexpr const char* no_row = "0";

  const select_statement& statement_;
  std::vector<bound_value> values_;
};

} // namespace

std::string shown_text(const select_statement& statement) {
  const std::string quoted = statement.of_several ? "[" + statement.table + "]" : "'" + statement.table + "'";
  std::string text =
      "SELECT " + (statement.distinct ? "DISTINCT " + statement.distinct->name : "*") + " FROM " + quoted;
  const char* link = " WHERE (";
  for (const select_term& term : statement.terms) {
    text += &term == &statement.terms.front() ? link : word_of(term.conjunction);
    text +=
        term.field.name + symbol_of(term.comparison) + shown_value(term.value, term.field.type, statement.of_several);
  }
  if (!statement.terms.empty()) {
    text += ")";
    link = " AND (";
  }
  if (statement.period && statement.moment_field) {
    const auto& [first, last] = *statement.period;
    const std::string& moment = statement.moment_field->name;
    text += link + moment + ">=" + shown_moment(first, statement.of_several);
    if (last) text += " AND " + moment + "<=" + shown_moment(*last, statement.of_several);
    text += ")";
  }
  const auto& order = statement.distinct ? statement.distinct : statement.moment_field;
  return order ? text + " ORDER BY " + order->name : text;
}

sqlite_statement sqlite_text(const select_statement& statement, std::string_view table,
                             const std::vector<std::string>& columns, bool in_any_order,
                             std::optional<std::size_t> most_rows) {
  constexpr std::size_t most_terms = 500; // of a chain of them, so that SQLite's limits hold
  if (statement.terms.size() > most_terms)
    throw query_engine_exception("The query has " + std::to_string(statement.terms.size()) + " conditions; at most " +
                                 std::to_string(most_terms) + " are allowed.");
  sqlite_statement printed = sqlite_printer(statement).print(table, columns, in_any_order);
  if (most_rows) printed.sql += " LIMIT " + std::to_string(*most_rows);
  return printed;
}

} // namespace vesk
