#include "query/sql/select_statement.h"

#include <gtest/gtest.h>

#include <sstream>

namespace vesk {
namespace {

const std::vector<table_field> fields = {{"Order", field_type::integer},        {"Sale Date", field_type::date},
                                         {"Flow (m3/s)", field_type::floating}, {"Flow", field_type::floating},
                                         {"Station", field_type::string},       {"and", field_type::string},
                                         {"Wet", field_type::boolean},          {"Serial", field_type::floating}};

// The statement with its parameters' values between braces.
std::string with_values(const translated_statement& all) {
  std::string sql = all.sql;
  for (std::size_t i = all.values.size(); i > 0; --i) {
    const std::string name = "?" + std::to_string(i);
    std::ostringstream value;
    value.precision(17);
    std::visit([&](const auto& v) { value << '{' << v << '}'; }, all.values[i - 1]);
    const std::size_t place = sql.find(name);
    EXPECT_NE(place, sql.npos) << sql;
    if (place != sql.npos) sql.replace(place, name.size(), value.str());
  }
  EXPECT_EQ(sql.find('?'), sql.npos) << sql;
  return sql;
}

// What SQLite is given for the text behind "SELECT * FROM 'x'".
std::string tail(const std::string& text) {
  const std::string all = with_values(translate_statement("SELECT * FROM 'x'" + text, fields, "s", {.columns = {0}}));
  EXPECT_EQ(all.find("SELECT t.\"Order\" FROM \"s\" AS t"), 0U);
  return all.substr(all.find(" AS t") + 5);
}

TEST(SelectStatement, FieldsStandWithBlanksSignsAndReservedWords) {
  EXPECT_EQ(tail(" WHERE (Flow (m3/s)>=1.5) ORDER BY Order"),
            " WHERE ((t.\"Flow (m3/s)\">={1.5} AND t.\"Flow (m3/s)\"<=9e999)) ORDER BY t.\"Order\"");
  EXPECT_EQ(tail(" WHERE (and='x' AND and='y' OR Flow=2)"),
            " WHERE (t.\"and\"={x} AND t.\"and\"={y} OR t.\"Flow\"={2})");
  EXPECT_EQ(tail(" where (STATION=' a ') order by [sale date]"),
            " WHERE (t.\"Station\"={ a }) ORDER BY t.\"Sale Date\"");
  EXPECT_EQ(translate_statement("SELECT DISTINCT Flow (m3/s) FROM [a] b] ORDER BY Flow (m3/s)", fields, "s").sql,
            "SELECT DISTINCT t.\"Flow (m3/s)\" COLLATE BINARY FROM \"s\" AS t ORDER BY t.\"Flow (m3/s)\"");
  EXPECT_EQ(translate_statement("SELECT * FROM [a]", fields, "s").fields.size(), fields.size());
}

TEST(SelectStatement, ApostrophesInsideATextEndNothing) {
  EXPECT_EQ(tail(" WHERE (Station='O'Brien') ORDER BY Flow"), " WHERE (t.\"Station\"={O'Brien}) ORDER BY t.\"Flow\"");
  EXPECT_EQ(tail(" WHERE (Station='it's' AND Station='x')"), " WHERE (t.\"Station\"={it's} AND t.\"Station\"={x})");
  // A literal that is known is one, whatever stands in it.
  const std::string injected = "a' OR Station='b";
  const std::string both = "SELECT * FROM 'x' WHERE (Flow=1 AND Station='" + injected + "' OR Station='a')";
  const std::string read = with_values(translate_statement(both, fields, "s", {.literals = {"1", injected, "a"}}));
  EXPECT_NE(read.find("t.\"Station\"={a' OR Station='b} OR t.\"Station\"={a})"), read.npos) << read;
  EXPECT_NE(read, with_values(translate_statement(both, fields, "s")));
  EXPECT_EQ(table_of_statement("SELECT * FROM 'O'Brien's.dbf' WHERE (Station='x')"), "O'Brien's.dbf");
  EXPECT_EQ(table_of_statement("SELECT DISTINCT from FROM [Sheet 1$]"), "Sheet 1$");
}

TEST(SelectStatement, DatesCompareAsMomentsInBothForms) {
  const std::string from = tail(" WHERE (Sale Date>=#1/2/2000 3:00:00#)");
  EXPECT_EQ(from, tail(" WHERE (Sale Date>='1/2/2000, 3:00:00')"));
  double bound = 0;
  ASSERT_EQ(std::sscanf(from.c_str(), " WHERE (t.\"Sale Date\">={%lf})", &bound), 1);
  EXPECT_NEAR(bound, 36527.125, 0.5 / 86400);
  EXPECT_LT(bound, 36527.125); // so that the moment itself is in, however it is rounded
  EXPECT_EQ(tail(" WHERE (Sale Date='2000-01-02')"), tail(" WHERE (Sale Date='1/2/2000')"));
  EXPECT_EQ(tail(" WHERE (Serial>='1/2/2000')").find(" WHERE (t.\"Serial\">={3652"), 0U); // day numbers
  EXPECT_EQ(tail(" WHERE (Wet=True)"), " WHERE ((t.\"Wet\"<=9e999 AND (t.\"Wet\"<>0)=1))");
  EXPECT_EQ(moment_literal("13/1/2000"), std::nullopt);
}

TEST(SelectStatement, WhatIsNotUnderstoodIsToldWithTheStatement) {
  const auto message = [](const std::string& sql) {
    try {
      translate_statement(sql, fields, "s");
    } catch (const query_engine_exception& error) {
      return std::string(error.what());
    }
    return std::string("understood");
  };
  EXPECT_EQ(
      message("SELECT * FROM 'x' WHERE (Depth=1)"),
      "The statement is not understood from \"Depth=1)\" on. The statement was: SELECT * FROM 'x' WHERE (Depth=1)");
  EXPECT_EQ(message("SELECT * FROM 'x' WHERE (Flow=1"),
            "The statement ends too early. The statement was: SELECT * FROM 'x' WHERE (Flow=1");
  for (const char* sql : {"", "DELETE FROM 'x'", "SELECT * FROM x", "SELECT * FROM 'x'; DROP TABLE s", "SELECT *",
                          "SELECT * FROM 'x' WHERE (Flow='high')", "SELECT * FROM 'x' WHERE (Sale Date='32/1/2000')",
                          "SELECT * FROM 'x' ORDER BY Depth"})
    EXPECT_NE(message(sql), "understood") << sql;
  const std::string marks(3000, '\''); // many ways to read it, and it ends all the same
  EXPECT_NE(message("SELECT * FROM 'x' WHERE (Station=" + marks + " AND Station=" + marks + " AND Flow=x)"),
            "understood");
}

} // namespace
} // namespace vesk
