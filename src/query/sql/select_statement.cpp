#include "query/sql/select_statement.h"

#include "dataset/moment.h"
#include "query/sources/date_text.h"
#include "query/sources/number_text.h"
#include "query/sqlite_names.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace vesk {

namespace {

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

// A number; a whole one to its last digit, which a floating-point number may not have.
std::optional<bound_value> number_of(std::string_view text) {
  std::int64_t whole = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), whole);
  if (error == std::errc() && end == text.data() + text.size()) return whole;
  const auto number = plain_number(text);
  return number ? std::optional<bound_value>(*number) : std::nullopt;
}

// Reads a statement from left to right. Where a text can be read in more than one way, `choose` tries them in order and
// keeps the first after which the rest can be read, too.
class statement_reader {
public:
  statement_reader(std::string_view sql, const std::vector<table_field>& fields) : sql_(sql), fields_(fields) {}

  std::string_view rest(std::size_t at) const { return sql_.substr(std::min(at, sql_.size())); }

  std::size_t past_blanks(std::size_t at) const {
    while (at < sql_.size() && (sql_[at] == ' ' || sql_[at] == '\r' || sql_[at] == '\n' || sql_[at] == '\t')) ++at;
    return at;
  }

  // The fields whose names stand here or behind blanks; a name may begin with blanks itself.
  struct named_field {
    std::size_t field, end;
  };
  std::vector<named_field> fields_after(std::size_t at) const {
    std::vector<named_field> found;
    for (const std::size_t last = past_blanks(at); at <= last; ++at)
      for (const named_field& field : fields_at(at)) found.push_back(field);
    return found;
  }

  // Behind the words, which blanks part, in any case of letters; nothing when they do not stand here.
  std::optional<std::size_t> past_words(std::size_t at, std::initializer_list<std::string_view> words) const {
    for (const std::string_view word : words) {
      at = past_blanks(at);
      if (!equal_ignoring_case(sql_.substr(std::min(at, sql_.size()), word.size()), word)) return {};
      at += word.size();
      if (at < sql_.size() && is_word(sql_[at]) && is_word(word.back())) return {};
    }
    return at;
  }

  // The fields whose names stand here, the longest first, with the places behind them. A name may be marked.
  std::vector<named_field> fields_at(std::size_t at) const {
    std::vector<named_field> found;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      const std::string& name = fields_[i].name;
      for (const std::string& written : {name, '[' + name + ']', '"' + name + '"'})
        if (equal_ignoring_case(sql_.substr(std::min(at, sql_.size()), written.size()), written))
          found.push_back({i, at + written.size()});
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.end > b.end; });
    return found;
  }

  // The places where a table's name or a literal may end that begins here with `opening`: those of `closing`.
  std::vector<std::size_t> closings(std::size_t at, char closing) const {
    std::vector<std::size_t> places;
    for (std::size_t i = at; i < sql_.size(); ++i)
      if (sql_[i] == closing) places.push_back(i);
    return places;
  }

  static bool is_word(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  }

  std::string_view sql() const { return sql_; }

private:
  const std::string_view sql_;
  const std::vector<table_field>& fields_;
};

const std::vector<table_field> no_fields;

[[noreturn]] void refuse(const std::string& cause, std::string_view sql) {
  throw query_engine_exception(cause + " The statement was: " + std::string(sql));
}

// Where the table's name begins behind FROM, and where the statement goes on behind it, for each place where it may
// end.
struct table_place {
  std::size_t begin, end, next;
};
std::vector<table_place> table_places(const statement_reader& reader, std::size_t at) {
  const std::string_view sql = reader.sql();
  at = reader.past_blanks(at);
  if (at >= sql.size() || (sql[at] != '\'' && sql[at] != '[')) return {};
  std::vector<table_place> places;
  for (const std::size_t end : reader.closings(at + 1, sql[at] == '[' ? ']' : '\'')) {
    const std::size_t next = end + 1;
    if (reader.past_blanks(next) == sql.size() || reader.past_words(next, {"WHERE"}) ||
        reader.past_words(next, {"ORDER", "BY"}))
      places.push_back({at + 1, end, next});
  }
  return places;
}

class translator {
public:
  translator(std::string_view sql, const std::vector<table_field>& fields, std::string_view table,
             const statement_hints& hints)
      : reader_(sql, fields), fields_(fields), table_(table), hints_(hints) {}

  translated_statement all() {
    const auto select = reader_.past_words(0, {"SELECT"});
    if (!select) fail(0);
    if (const auto star = reader_.past_words(*select, {"*"})) {
      if (const auto from = reader_.past_words(*star, {"FROM"})) {
        moments_ = field_of_order();
        return selected(columns(), *from);
      }
      fail(*star);
    }
    const auto distinct = reader_.past_words(*select, {"DISTINCT"});
    if (!distinct) fail(*select);
    for (const auto& [field, end] : reader_.fields_after(*distinct))
      if (const auto from = reader_.past_words(end, {"FROM"})) return selected({field}, *from, true);
    fail(*distinct);
  }

private:
  // How many ways of reading a statement are tried; a real one needs a few.
  static constexpr int most_attempts = 100'000;

  // What one statement may have, so that neither the stack here nor SQLite's runs out.
  static constexpr int most_terms = 500, most_parentheses = 50;

  // Counts what is being read, each inside the one before it.
  class one_more {
  public:
    explicit one_more(int& count) : count_(count) { ++count_; }
    ~one_more() { --count_; }
    one_more(const one_more&) = delete;
    one_more& operator=(const one_more&) = delete;

  private:
    int& count_;
  };

  std::vector<std::size_t> columns() const {
    if (!hints_.columns.empty()) return hints_.columns;
    std::vector<std::size_t> all(fields_.size());
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
    return all;
  }

  translated_statement selected(std::vector<std::size_t> fields, std::size_t from, bool distinct = false) {
    translated_statement result;
    result.sql = distinct ? "SELECT DISTINCT " : "SELECT ";
    for (std::size_t i = 0; i < fields.size(); ++i) result.sql += (i ? "," : "") + name(fields[i]);
    if (distinct) result.sql += " COLLATE BINARY"; // texts that differ in their case are two values
    result.sql += " FROM " + sql_quoted(table_) + " AS t";
    result.fields = std::move(fields);
    furthest_ = from;
    for (const table_place& place : table_places(reader_, from)) {
      const auto where = reader_.past_words(place.next, {"WHERE"});
      if (const auto tail = where ? term(*where, 0) : end(place.next)) {
        if (moments_ && !is_date_or_time(fields_[*moments_].type)) result.moment_field = moments_;
        result.values = std::move(values_);
        if (where) result.sql += " WHERE ";
        result.sql += *tail;
        return result;
      }
    }
    fail(furthest_);
  }

  std::string name(std::size_t field) const { return "t." + sql_quoted(fields_[field].name); }

  // The field that the rows are put in order by.
  std::optional<std::size_t> field_of_order() const {
    const std::string_view sql = reader_.sql();
    for (std::size_t at = sql.size(); at-- > 0;) {
      if (sql[at] != ' ') continue;
      const auto by = reader_.past_words(at, {"ORDER", "BY"});
      if (!by) continue;
      for (const auto& [field, end] : reader_.fields_after(*by))
        if (reader_.past_blanks(end) == sql.size()) return field;
    }
    return {};
  }

  // Each of these reads on to the end of the statement and returns what SQLite is given from here on; nothing when
  // the rest cannot be read so. `depth`: of open parentheses.
  std::optional<std::string> term(std::size_t at, int depth) {
    const std::size_t word = reach(at);
    if (++attempts_ > most_attempts) fail(word);
    const one_more counted(terms_);
    if (terms_ > most_terms)
      refuse("The statement has more than " + std::to_string(most_terms) + " conditions.", reader_.sql());
    if (depth > most_parentheses)
      refuse("More than " + std::to_string(most_parentheses) + " parentheses are open.", reader_.sql());
    if (word < reader_.sql().size() && reader_.sql()[word] == '(') {
      auto tail = term(word + 1, depth + 1);
      return tail ? std::optional("(" + *tail) : std::nullopt;
    }
    for (const auto& [field, end] : reader_.fields_after(at))
      if (auto read = comparison(field, end, depth)) return read;
    return {};
  }

  std::optional<std::string> comparison(std::size_t field, std::size_t at, int depth) {
    at = reach(at);
    for (const std::string_view symbol : {"<=", ">=", "<>", "=", "<", ">"})
      if (reader_.rest(at).starts_with(symbol)) return literal(field, symbol, reach(at + symbol.size()), depth);
    return {};
  }

  std::optional<std::string> literal(std::size_t field, std::string_view symbol, std::size_t at, int depth) {
    const std::string_view sql = reader_.sql();
    const one_more counted(literals_);
    if (at >= sql.size()) return {};
    if (const char quote = sql[at]; quote == '\'' || quote == '#') {
      for (const std::size_t end : ends_of_literal(at + 1, quote))
        if (auto read = condition(field, symbol, sql.substr(at + 1, end - at - 1), true, end + 1, depth)) return read;
      return {};
    }
    std::size_t end = at;
    while (end < sql.size() && sql[end] != ' ' && sql[end] != ')') ++end;
    return condition(field, symbol, sql.substr(at, end - at), false, end, depth);
  }

  std::optional<std::string> condition(std::size_t field, std::string_view symbol, std::string_view text, bool quoted,
                                       std::size_t next, int depth) {
    const std::size_t bound_before = values_.size();
    if (const auto translation = translated(field, symbol, text, quoted))
      if (auto tail = link(next, depth)) return *translation + *tail;
    values_.resize(bound_before);
    return {};
  }

  // Where the present term's literal may end: first where the one does that is known to stand here.
  std::vector<std::size_t> ends_of_literal(std::size_t at, char quote) const {
    std::vector<std::size_t> ends = reader_.closings(at, quote);
    const auto literal = static_cast<std::size_t>(literals_ - 1);
    if (literal >= hints_.literals.size()) return ends;
    const std::string& known = hints_.literals[literal];
    const auto end = std::find(ends.begin(), ends.end(), at + known.size());
    if (end != ends.end() && reader_.rest(at).starts_with(known)) std::rotate(ends.begin(), end, end + 1);
    return ends;
  }

  std::optional<std::string> link(std::size_t at, int depth) {
    at = reach(at);
    if (depth > 0 && at < reader_.sql().size() && reader_.sql()[at] == ')') {
      auto tail = link(at + 1, depth - 1);
      return tail ? std::optional(")" + *tail) : std::nullopt;
    }
    for (const std::string_view word : {"AND", "OR"})
      if (const auto next = reader_.past_words(at, {word})) {
        auto tail = term(*next, depth);
        return tail ? std::optional(" " + std::string(word) + " " + *tail) : std::nullopt;
      }
    return depth == 0 ? end(at) : std::nullopt;
  }

  // [ORDER BY field]
  std::optional<std::string> end(std::size_t at) {
    at = reach(at);
    if (at == reader_.sql().size()) return "";
    const auto by = reader_.past_words(at, {"ORDER", "BY"});
    if (!by) return {};
    for (const auto& [field, behind] : reader_.fields_after(*by))
      if (reach(behind) == reader_.sql().size()) return hints_.in_any_order ? "" : " ORDER BY " + name(field);
    return {};
  }

  // The parameter that stands for a value.
  std::string bound(bound_value value) {
    values_.push_back(std::move(value));
    return "?" + std::to_string(values_.size());
  }

  // The condition for SQLite; nothing when the literal is none for such a field.
  std::optional<std::string> translated(std::size_t field, std::string_view symbol, std::string_view text,
                                        bool quoted) {
    const field_type type = fields_[field].type;
    if (is_date_or_time(type) || (field == moments_ && !is_number(type))) {
      if (const auto moment = moment_literal(text)) return moment_condition(field, symbol, *moment);
      if (is_date_or_time(type)) return {};
    }
    if (is_number(type)) {
      if (type == field_type::boolean) {
        // Whatever is not 0 is true; some programs store 1, others -1.
        const std::string is_true = "(" + is_no_text(field) + " AND (" + name(field) + "<>0)" + std::string(symbol);
        for (const auto& [word, value] :
             {std::pair("true", "1"), {"yes", "1"}, {"-1", "1"}, {"1", "1"}, {"false", "0"}, {"no", "0"}})
          if (equal_ignoring_case(text, word)) return is_true + value + ")";
      }
      if (const auto number = number_of(text)) {
        const std::string condition = name(field) + std::string(symbol) + bound(*number);
        return symbol.front() == '>' ? "(" + condition + " AND " + is_no_text(field) + ")" : condition;
      }
      const auto moment = quoted ? moment_literal(text) : std::nullopt; // a column of day numbers
      return moment ? std::optional(moment_condition(field, symbol, *moment)) : std::nullopt;
    }
    const std::string compared =
        text.empty() ? "ifnull(" + name(field) + ",'')" : name(field); // no text is an empty one
    return compared + std::string(symbol) + bound(std::string(text));
  }

  // A text among the numbers is greater than each of them to SQLite.
  std::string is_no_text(std::size_t field) const { return name(field) + "<=9e999"; }

  std::string moment_condition(std::size_t field, std::string_view symbol, double number) {
    const moment_type moment = moment_type::from_date_time(number);
    const auto from = [&](const char* comparison) { return name(field) + comparison + bound(first_number_of(moment)); };
    const auto behind = [&](const char* comparison) { // 24:00:00 is a moment as well
      return name(field) + comparison + bound(first_number_of({moment.date, moment.time + 1}));
    };
    if (symbol == "=") return "(" + from(">=") + " AND " + behind("<") + ")";
    if (symbol == "<>") return "(" + from("<") + " OR " + behind(">=") + ")";
    return symbol == "<" ? from("<") : symbol == ">=" ? from(">=") : symbol == "<=" ? behind("<") : behind(">=");
  }

  // The next place behind blanks; remembered, so that a failure can tell how far the statement was understood.
  std::size_t reach(std::size_t at) {
    at = reader_.past_blanks(at);
    furthest_ = std::max(furthest_, at);
    return at;
  }

  [[noreturn]] void fail(std::size_t at) const {
    const std::string_view rest = reader_.rest(reader_.past_blanks(at));
    refuse(rest.empty() ? "The statement ends too early."
                        : "The statement is not understood from " + sql_quoted(rest.substr(0, 40)) + " on.",
           reader_.sql());
  }

  const statement_reader reader_;
  const std::vector<table_field>& fields_;
  const std::string table_;
  const statement_hints& hints_;
  std::optional<std::size_t> moments_; // the field whose values are moments, whatever its type
  std::vector<bound_value> values_;
  std::size_t furthest_ = 0;
  int attempts_ = 0, terms_ = 0, literals_ = 0;
};

} // namespace

std::string table_of_statement(std::string_view sql) {
  const statement_reader reader(sql, no_fields);
  for (std::size_t at = 0; at < sql.size(); ++at) {
    if (sql[at] != ' ') continue;
    const auto from = reader.past_words(at, {"FROM"});
    if (!from) continue;
    const auto places = table_places(reader, *from);
    if (!places.empty()) return std::string(sql.substr(places[0].begin, places[0].end - places[0].begin));
  }
  refuse("The statement names no table.", sql);
}

translated_statement translate_statement(std::string_view sql, const std::vector<table_field>& fields,
                                         std::string_view table, const statement_hints& hints) {
  return translator(sql, fields, table, hints).all();
}

std::optional<double> moment_literal(std::string_view text) {
  for (const date_form form : {date_form::month_first, date_form::iso, date_form::time_only, date_form::month_name})
    if (const auto read = read_date(text, form)) return read->serial;
  return {};
}

char literal_quote(field_type type, bool several_tables) {
  if (is_number(type)) return '\0';
  return is_date_or_time(type) && several_tables ? '#' : '\'';
}

bool is_date_or_time(field_type type) {
  return type == field_type::date || type == field_type::time || type == field_type::date_time;
}

bool is_number(field_type type) {
  switch (type) {
  case field_type::small_integer:
  case field_type::integer:
  case field_type::word:
  case field_type::boolean:
  case field_type::floating:
  case field_type::currency:
  case field_type::bcd:
  case field_type::auto_increment:
  case field_type::large_integer: return true;
  default: return false;
  }
}

} // namespace vesk
