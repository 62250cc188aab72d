// dBASE tables typed by hand: the types of FoxPro and of level 7, memo blocks, and damage.
#include "query/sources/databases/dbf_source.h"
#include "table_summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vesk {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;

struct field {
  std::string name;
  char type;
  unsigned char size, decimals = 0, flags = 0;
};

template <class T>
std::string bytes_of(T number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

// A number as level 7 has it, the upmost byte first.
template <class T>
std::string big_endian(T number) {
  const std::string bytes = bytes_of(number);
  return {bytes.rbegin(), bytes.rend()};
}

// Records begin with the mark of deleted ones.
std::string table(char version, const std::vector<field>& fields, const std::vector<std::string>& records) {
  const bool level_7 = version == 4;
  std::string descriptions;
  for (const field& f : fields) {
    std::string row = f.name;
    row.resize(level_7 ? 32 : 11);
    row += f.type;
    row.resize(level_7 ? 33 : 16);
    row += {static_cast<char>(f.size), static_cast<char>(f.decimals), static_cast<char>(f.flags)};
    row.resize(level_7 ? 48 : 32);
    descriptions += row;
  }
  const std::size_t start = (level_7 ? 68 : 32) + descriptions.size() + 1;
  std::string header(1, version);
  header.resize(4);
  header += bytes_of(static_cast<std::uint32_t>(records.size())) + bytes_of(static_cast<std::uint16_t>(start)) +
            bytes_of(static_cast<std::uint16_t>(records.at(0).size()));
  header.resize(level_7 ? 68 : 32);
  std::string content = header + descriptions + '\r';
  for (const std::string& record : records) content += record;
  return content;
}

std::vector<std::string> read(const std::string& content, const std::optional<std::string>& memo = {}) {
  std::optional<std::span<const std::byte>> memo_bytes;
  if (memo) memo_bytes = std::as_bytes(std::span(*memo));
  return print(*open_dbf(std::as_bytes(std::span(content)), memo_bytes, "river.dbf"));
}

// The bytes of a text field of a table with this language byte, beside a file .cpg with this content.
std::string text_of(const std::string& bytes, char language, std::string_view encoding = {}) {
  std::string content = table(3, {{"T", 'C', static_cast<unsigned char>(bytes.size())}}, {" " + bytes});
  content[29] = language;
  return print(*open_dbf(std::as_bytes(std::span(content)), std::nullopt, "river.dbf", encoding)).at(1);
}

TEST(Dbf, ReadsTextsInTheirCodePage) {
  EXPECT_EQ(text_of("\x86\x8d\x91\x92\xa4\xa2\x9e\xa6\xa7 \xa1\x9c\x81", '\x69'), "ąćęłńóśźż ŻŁü"); // Mazovia
  EXPECT_EQ(text_of("\xc5\xbb\xc3\xb3\xc5", '\xf0'), "Żó"); // the last character is cut by the field's end
  EXPECT_EQ(text_of("\xe6", '\x57'), "æ");
  for (const char* name : {"UTF-8", "utf8\r\n", "65001"}) EXPECT_EQ(text_of("\xc3\xa6", '\x57', name), "æ") << name;
  for (const char* name : {"1251", "ANSI 1251", "CP1251"}) EXPECT_EQ(text_of("\xe6", '\x57', name), "ж") << name;
  for (const char* name : {"ISO-8859-2", "88592", "ISO 8859 2"}) EXPECT_EQ(text_of("\xe6", '\x57', name), "ć") << name;
  EXPECT_EQ(text_of("\xe6", '\xc9', "nonsense"), "ж");
  EXPECT_EQ(text_of("\xe6", '\xc9', ""), "ж");
}

std::string failure(const std::string& content, const std::optional<std::string>& memo = {}) {
  try {
    read(content, memo);
  } catch (const table_source_exception& error) {
    return error.what();
  }
  return "read";
}

TEST(Dbf, ReadsTheTypesOfVisualFoxpro) {
  const std::vector<field> fields{{"AT", 'T', 8}, {"N", 'B', 8},       {"I", 'I', 4},
                                  {"V", 'V', 4},  {"C", 'C', 2, 0, 2}, {"_NullFlags", '0', 1}};
  const std::string moment = bytes_of(std::int32_t{2455593}) + bytes_of(std::int32_t{46800000}); // 2011-01-31 13:00
  const std::string record = moment + bytes_of(-1.5) + bytes_of(std::int32_t{-7});
  const std::string none = std::string(8, '\0') + bytes_of(0.0) + bytes_of(std::int32_t{0});
  EXPECT_THAT(
      read(table(0x30, fields, {" " + record + "ab\0\2x \1"s, "*" + record + "abcdx \0"s, " " + none + "abcdx \2"s})),
      ElementsAre("AT:11; N:6; I:3; V:1; C:1", "2011-01-31 13:00:00; -1.5; -7; ab; x", "NULL; 0; 0; abcd; NULL"));
}

TEST(Dbf, ReadsTheTypesOfLevel7) {
  const double ms = (693594.0 + 40574) * 86400000 + 46800000;
  const auto turned = std::bit_cast<std::uint64_t>(2.5) ^ (std::uint64_t{1} << 63);
  EXPECT_THAT(read(table(4, {{"A name longer than eleven", '@', 8}, {"O", 'O', 8}, {"O", 'O', 8}, {"ID", '+', 4}},
                         {" " + big_endian(ms) + big_endian(turned) + big_endian(~std::bit_cast<std::uint64_t>(-2.5)) +
                          big_endian(std::uint32_t{0x80000003})})),
              ElementsAre("A name longer than eleven:11; O:6; O_1:6; ID:14", "2011-01-31 13:00:00; 2.5; -2.5; 3"));
}

TEST(Dbf, ReadsMemosOfFoxpro) {
  std::string memo(1024, '\0');
  memo[7] = 64; // block size
  memo.replace(512, 13,
               std::string("\0\0\0\1\0\0\0\5"
                           "depth",
                           13));
  const std::vector<field> fields{{"M", 'M', 4}};
  const std::string content = table(0x30, fields, {" " + bytes_of(8), " " + bytes_of(0)});
  EXPECT_THAT(read(content, memo), ElementsAre("M:16", "depth", "NULL"));
  EXPECT_EQ(failure(content), "river.dbf, field M: record 1, in the memo file: the file is missing.");
  EXPECT_EQ(
      failure(content, memo.substr(0, 522)),
      "river.dbf, field M: record 1, in the memo file: 5 bytes are missing at byte 520: the file has only 522 bytes.");
}

TEST(Dbf, ReportsDamage) {
  const std::vector<field> fields{{"DAY", 'D', 8}, {"Q", 'N', 6, 1}};
  const auto with = [&](const char* record) { return table(3, fields, {" 20110131   1.5", record}); };
  EXPECT_THAT(read(with(" 00000000******")), ElementsAre("DAY:9; Q:6", "2011-01-31; 1.5", "NULL; NULL"));
  EXPECT_EQ(failure(with(" 20110231   1.5")), "river.dbf, field DAY: record 2: expected a date, found \"20110231\".");
  EXPECT_EQ(failure(with(" 20110131  1\n.5")), "river.dbf, field Q: record 2: expected a number, found \"1?.5\".");
  std::string cut = with(" 20110201   2.5");
  cut.pop_back();
  EXPECT_EQ(failure(cut), "river.dbf: the header claims 2 records, but the file holds only 1.");
  EXPECT_EQ(failure(cut.substr(0, 20)), "river.dbf: the file is too short for a dBASE table.");
  EXPECT_EQ(failure(table(3, {{"A", 'C', 9}}, {" short"})),
            "river.dbf, field A: it ends at byte 10 of a record of 6 bytes.");
  EXPECT_EQ(failure(table(3, {{"A", 'I', 2}}, {" 12"})),
            "river.dbf, field A: a field of type I has 2 bytes instead of 4.");
}

} // namespace

} // namespace vesk
