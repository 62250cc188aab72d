// A statement as a value: the text that is shown, and the one that SQLite executes.
#include "query/sql/select_statement.h"
#include "query/sql/table_module.h"
#include "query/value_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <sstream>

namespace vesk {
namespace {

using enum term_comparison;
using enum term_conjunction;

const table_field order{"Order", field_type::integer}, sold{"Sale Date", field_type::date},
    flow{"Flow (m3/s)", field_type::floating}, station{"Sta\"tion", field_type::string},
    wet{"Wet", field_type::boolean}, serial{"Serial", field_type::floating}, note{"and", field_type::memo};
const std::vector<table_field> fields = {order, sold, flow, station, wet, serial, note};

// What SQLite is given after the table's name, with the parameters' values between braces.
std::string tail(const select_statement& statement, bool in_any_order = false) {
  const sqlite_statement printed = sqlite_text(statement, "s", {"Order"}, in_any_order);
  const std::string head = "SELECT t.\"Order\" FROM \"s\" AS t";
  EXPECT_EQ(printed.sql.find(head), 0U) << printed.sql;
  std::string sql = printed.sql.substr(head.size());
  for (std::size_t i = printed.values.size(); i > 0; --i) {
    const std::string name = "?" + std::to_string(i);
    std::ostringstream value;
    value.precision(17);
    std::visit([&](const auto& v) { value << '{' << v << '}'; }, printed.values[i - 1]);
    sql.replace(sql.find(name), name.size(), value.str());
  }
  return sql;
}

std::string where(std::vector<select_term> terms) {
  return tail({.table = "x", .terms = std::move(terms)});
}

const moment_type first = moment_type::from_date_time(36527.125),
                  last = moment_type::from_date_time(36530); // 2 January 2000

TEST(SelectStatement, IsShownInTheFormOfItsSource) {
  select_statement statement{
      .table = "O'Brien' WHERE x.dbf",
      .terms = {{station, equal, "it's"}, {sold, greater, "3/24/1989"}, {order, less, "1001", either}},
      .moment_field = sold,
      .period = select_period{first, last}};
  EXPECT_EQ(shown_text(statement),
            "SELECT * FROM 'O'Brien' WHERE x.dbf' WHERE (Sta\"tion='it's' AND Sale Date>'3/24/1989' OR Order<1001) AND "
            "(Sale Date>='1/2/2000, 3:00:00' AND Sale Date<='1/5/2000, 0:00:00') ORDER BY Sale Date");
  statement.of_several = true;
  statement.period->last.reset();
  statement.terms.pop_back();
  EXPECT_EQ(shown_text(statement),
            "SELECT * FROM [O'Brien' WHERE x.dbf] WHERE (Sta\"tion='it's' AND Sale Date>#3/24/1989#) AND "
            "(Sale Date>=#1/2/2000 3:00:00#) ORDER BY Sale Date");
  EXPECT_EQ(
      shown_text(
          {.table = "t", .distinct = flow, .terms = {{wet, less_or_equal, "True"}, {note, greater_or_equal, ""}}}),
      "SELECT DISTINCT Flow (m3/s) FROM 't' WHERE (Wet<=True AND and>='') ORDER BY Flow (m3/s)");
  EXPECT_EQ(shown_text({.table = "t"}), "SELECT * FROM 't'");
}

TEST(SelectStatement, BindsItsValues) {
  EXPECT_EQ(where({{flow, greater_or_equal, "1.5"}, {order, equal, "9007199254740993", either}}),
            " WHERE ((t.\"Flow (m3/s)\">={1.5} AND t.\"Flow (m3/s)\"<=9e999) OR t.\"Order\"={9007199254740993})");
  EXPECT_EQ(where({{station, less, "a' OR 'x'='x"}, {note, equal, "", both}}),
            " WHERE (t.\"Sta\"\"tion\"<{a' OR 'x'='x} AND ifnull(t.\"and\",'')={})");
  EXPECT_EQ(where({{wet, equal, "True"}, {wet, less, "False"}}),
            " WHERE ((t.\"Wet\"<=9e999 AND (t.\"Wet\"<>0)=1) AND (t.\"Wet\"<=9e999 AND (t.\"Wet\"<>0)<0))");
  for (const select_term& never : {select_term{flow, less, "high"}, {sold, equal, "soon"}, {wet, equal, "perhaps"}})
    EXPECT_EQ(where({never}), " WHERE (0)");
  EXPECT_EQ(sqlite_text({.table = "x", .distinct = station}, "s").sql,
            "SELECT DISTINCT t.\"Sta\"\"tion\" COLLATE BINARY FROM \"s\" AS t ORDER BY t.\"Sta\"\"tion\"");
  EXPECT_EQ(sqlite_text({.table = "x", .moment_field = order}, "s", {}, true).sql, "SELECT * FROM \"s\" AS t");
}

TEST(SelectStatement, ComparesDatesToTheSecond) {
  const std::string from = tail({.table = "x", .moment_field = serial, .period = select_period{first}});
  double bound = 0;
  ASSERT_EQ(std::sscanf(from.c_str(), " WHERE t.\"Serial\">={%lf}", &bound), 1) << from; // day numbers
  EXPECT_NEAR(bound, 36527.125, 0.5 / 86400);
  EXPECT_LT(bound, 36527.125); // so that the moment itself is in, however it is rounded
  EXPECT_EQ(where({{sold, equal, "2000-01-02"}}), where({{sold, equal, "1/2/2000"}}));
  EXPECT_THAT(where({{sold, less, "1/2/2000"}}), testing::MatchesRegex(" WHERE .t.\"Sale Date\"<.36526.99999.*"));
  EXPECT_THAT(where({{sold, less_or_equal, "1/2/2000"}}),
              testing::MatchesRegex(" WHERE .t.\"Sale Date\"<.36527.00000.*"));
  EXPECT_EQ(moment_literal("13/1/2000"), std::nullopt);
}

// A source of one row for each value of a text field.
class texts final : public table_source {
public:
  explicit texts(std::vector<std::string> values) : table_source("texts"), values_(std::move(values)) {
    tables_ = {"texts"};
  }
  const std::vector<table_field>& fields(std::size_t) override { return vesk::fields; }
  std::unique_ptr<row_cursor> rows(std::size_t, std::vector<row_filter> filters) override {
    return std::make_unique<cursor>(values_, std::move(filters));
  }

private:
  class cursor final : public row_cursor {
  public:
    cursor(const std::vector<std::string>& values, std::vector<row_filter> filters)
        : row_cursor(std::move(filters)), values_(values) {}
    table_value value(std::size_t) override { return table_value::of_text(values_[at_ - 1]); }

  private:
    bool advance() override { return at_++ < values_.size(); }
    const std::vector<std::string>& values_;
    std::size_t at_ = 0;
  };
  const std::vector<std::string> values_;
};

// Whatever names and values contain, SQLite takes the statement as one that only reads, and selects the value's row.
TEST(SelectStatement, IsTakenByTheLibraryWhateverItHolds) {
  const std::vector<std::string> values = {"a' OR 'x'='x", "?1", "\"; DROP TABLE s; --", "]", "", "it''s"};
  texts source(values);
  for (const std::string& value : values) {
    select_statement statement{.table = "x"};
    for (int i = 0; i < 500; ++i)
      statement.terms.push_back({i % 2 ? note : station, equal, value, i % 3 ? both : either});
    const sqlite_statement printed = sqlite_text(statement, "s", {"and"});
    module_table table{.source = source, .table = 0, .fields = fields, .ignore_case = false};
    sqlite3* database = nullptr;
    sqlite3_stmt* prepared = nullptr;
    sqlite3_open(":memory:", &database);
    attach_table(database, "s", table);
    const char* rest = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(database, printed.sql.c_str(), -1, &prepared, &rest), SQLITE_OK)
        << sqlite3_errmsg(database);
    EXPECT_STREQ(rest, "");
    for (std::size_t i = 0; i < printed.values.size(); ++i)
      sqlite3_bind_text(prepared, static_cast<int>(i + 1), value.c_str(), -1, SQLITE_TRANSIENT);
    std::size_t rows = 0;
    int state;
    while ((state = sqlite3_step(prepared)) == SQLITE_ROW) ++rows;
    EXPECT_EQ(state, SQLITE_DONE);
    EXPECT_EQ(rows, 1U) << value;
    sqlite3_finalize(prepared);
    sqlite3_close(database);
    statement.terms.push_back({station, equal, value});
    EXPECT_THAT([&] { sqlite_text(statement, "s"); }, testing::ThrowsMessage<query_engine_exception>(
                                                          "The query has 501 conditions; at most 500 are allowed."));
  }
}

} // namespace
} // namespace vesk
