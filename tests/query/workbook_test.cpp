// Workbooks typed by hand: what a cell may be in each of their formats, and what is refused.
#include "query/sources/open_table_source.h"
#include "query/sources/workbooks/sheet_source.h"
#include "query/sources/workbooks/xls_source.h"
#include "table_summary.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <minizip/zip.h>

namespace vesk {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;

template <class T>
std::string bytes_of(T number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::string record(std::uint16_t id, const std::string& data) {
  return bytes_of(id) + bytes_of(static_cast<std::uint16_t>(data.size())) + data;
}

// Row, column and style of a cell.
std::string cell(std::uint16_t row, std::uint16_t column, std::uint16_t style = 0) {
  return bytes_of(row) + bytes_of(column) + bytes_of(style);
}

// The bare stream of a workbook with one sheet. `version`: 0x0500 or 0x0600.
std::vector<std::string> read_xls(std::uint16_t version, const std::string& globals, const std::string& cells) {
  const std::string begin = record(0x0809, bytes_of(version) + "\5\0"s), end = record(0x000a, "");
  const std::string name = version == 0x0600 ? "\1\0S"s : "\1S"s;
  const auto sheet = static_cast<std::uint32_t>(2 * begin.size() + 4 + 6 + name.size() + globals.size() + end.size());
  const std::string content =
      begin + record(0x0085, bytes_of(static_cast<std::uint32_t>(sheet - begin.size())) + "\0\0"s + name) + globals +
      end + begin + cells + end;
  return print(*open_xls(std::as_bytes(std::span(content)), "river.xls"));
}

// Two units that are one character, with the end of a record between them.
TEST(Xls, ReadsATextThatIsContinuedInsideACharacter) {
  const std::string counts = bytes_of(std::uint32_t{2}) + bytes_of(std::uint32_t{2});
  const std::string wide = "\6\0\1x\0\x3d\xd8"s, rest = "\1\x00\xde\x3d\xd8"s, end = "\1\1\xdez\0"s;
  EXPECT_THAT(read_xls(0x0600, record(0x00fc, counts + "\1\0\0a"s + wide) + record(0x003c, rest) + record(0x003c, end),
                       record(0x00fd, cell(0, 0) + bytes_of(std::uint32_t{0})) +
                           record(0x00fd, cell(1, 0) + bytes_of(std::uint32_t{1}))),
              ElementsAre("a:1", "x😀😁z"));
}

TEST(Xls, ReadsTheCellsOfExcel5) {
  const std::string text_result = "\0\0\0\0\0\0\xff\xff"s, true_result = "\1\0\1\0\0\0\xff\xff"s, rest(8, '\0');
  EXPECT_THAT(
      read_xls(0x0500,
               record(0x0042, bytes_of(std::uint16_t{1251})) + record(0x041e, "\xa4\0\7[h]:mm "s) +
                   record(0x00e0, "\0\0\0\0"s) + record(0x00e0, "\0\0\xa4\0"s) + record(0x00e0, "\0\0\x0e\0"s),
               record(0x0204, cell(0, 0) + "\1\0\xd0"s) + record(0x0204, cell(0, 1) + "\1\0b"s) +
                   record(0x0204, cell(0, 2) + "\1\0c"s) + record(0x0204, cell(0, 3) + "\1\0d"s) +
                   record(0x0006, cell(1, 0) + text_result + rest) + record(0x0207, "\2\0xy"s) +
                   record(0x0006, cell(1, 1) + bytes_of(2.5) + rest) +
                   record(0x0203, cell(1, 2, 2) + bytes_of(40574.0)) + record(0x0006, cell(1, 3) + true_result + rest) +
                   // 7 as an integer, 1.25 as a hundredth, then a time
                   record(0x00d6, cell(2, 0) + "\1\0z"s) + record(0x027e, cell(2, 1) + bytes_of(7 << 2 | 2)) +
                   record(0x027e, cell(2, 2, 2) + bytes_of(4057500 << 2 | 3)) + record(0x0205, cell(2, 3) + "\0\0"s) +
                   record(0x00bd, "\3\0\1\0\0\0"s + bytes_of(125 << 2 | 3) + "\1\0"s + bytes_of(1 << 2 | 2) + "\2\0"s)),
      ElementsAre("Р:1; b:6; c:9; d:5", "xy; 2.5; 2011-01-31; 1", "z; 7; 2011-02-01; 0",
                  "NULL; 1.25; 1900-01-01; NULL"));
}

// A shared text of two bytes a character that goes on in one byte a character, after a rich one.
TEST(Xls, ReadsContinuedSharedTexts) {
  EXPECT_THAT(
      read_xls(0x0600,
               record(0x00fc, "\2\0\0\0\2\0\0\0\1\0\x08\1\0q\0\0\0\0\4\0\1a\0\xb0\0"s) + record(0x003c, "\0C!"s),
               record(0x00fd, cell(0, 0) + bytes_of(0)) + record(0x00fd, cell(1, 0) + bytes_of(1))),
      ElementsAre("q:1", "a°C!"));
  EXPECT_THAT([] { read_xls(0x0600, record(0x002f, "\0\0"s), ""); },
              testing::ThrowsMessage<table_source_exception>(
                  "river.xls: the workbook is protected by a password; save a copy without it."));
}

TEST(Workbooks, TellDatesByTheirFormat) {
  for (const char* format : {"M/D/YYYY", "[$-409]h:mm AM/PM", "[Red]dd\\.mm", "[mm]:ss", "\"at\" yyyy"})
    EXPECT_TRUE(is_date_format(format)) << format;
  for (const char* format :
       {"General", "0.00E+00", "#,##0 \"days\"", "[Red]0;dd", "0\\h", "[$h-407]0", "\"open d", "["})
    EXPECT_FALSE(is_date_format(format)) << format;
}

TEST(Workbooks, AreRefusedUnderTheNameOfASingleTable) {
  const temporary_folder folder;
  const auto failure = [&](const char* file, const char* name) {
    std::filesystem::copy_file(VESK_TEST_DATA "/tables/" + std::string(file), folder.file(name));
    try {
      open_table_source(folder.file(name));
    } catch (const table_source_exception& error) {
      return error.cause();
    }
    return std::string("read");
  };
  EXPECT_EQ(failure("readings.xlsx", "a.csv"),
            "it is an Excel workbook with the extension of a single table; rename it to end with .xlsx.");
  EXPECT_EQ(failure("date.ods", "b.xlsm"),
            "it is an OpenDocument workbook with the extension of a single table; rename it to end with .ods.");
  EXPECT_EQ(failure("roanoke_daily.sqlite", "c.sqlite3"),
            "it is a SQLite database with the extension of a single table; rename it to end with .sqlite.");
  EXPECT_EQ(failure("date.xls", "d.dbf"),
            "it is an Excel workbook with the extension of a single table; rename it to end with .xls.");
  EXPECT_EQ(failure("readings.xlsx", "e.ods"), "read"); // both hold several tables
}

class ZippedWorkbook : public testing::Test {
protected:
  // The table of a workbook with these parts.
  std::vector<std::string> read(const std::vector<std::pair<std::string, std::string>>& parts,
                                const std::string& file_name = "river.xlsx") {
    const std::string file = folder.file(file_name);
    zipFile zip = zipOpen(file.c_str(), APPEND_STATUS_CREATE);
    for (const auto& [name, content] : parts) {
      zipOpenNewFileInZip(zip, name.c_str(), nullptr, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, 1);
      zipWriteInFileInZip(zip, content.data(), static_cast<unsigned>(content.size()));
      zipCloseFileInZip(zip);
    }
    zipClose(zip, nullptr);
    try {
      return print(*open_table_source(file));
    } catch (const table_source_exception& error) {
      return {error.cause()};
    }
  }
  std::vector<std::string> read_ods(const std::string& rows) {
    return read(
        {{"content.xml", "<o:document-content xmlns:o='o' xmlns:t='t' xmlns:x='x'><o:spreadsheet><t:table t:name='S'>" +
                             rows + "</t:table></o:spreadsheet></o:document-content>"}});
  }
  temporary_folder folder;
};

TEST_F(ZippedWorkbook, XlsxCellsOfAllKinds) {
  const std::string sheet = "<x:worksheet xmlns:x='x'><x:sheetData><x:row><x:c "
                            "t='inlineStr'><x:is><x:t>a</x:t><x:rPh><x:t>no</x:t></x:rPh></x:is></x:c>"
                            "<x:c r='C1' t='str'><x:f>B1</x:f><x:v>at</x:v></x:c><x:c t='s'><x:v>0</x:v></x:c></x:row>"
                            "<x:row r='3'><x:c r='A3'><x:f>1+1</x:f><x:v>2</x:v></x:c><x:c r='C3' "
                            "s='1'><x:v>0.5</x:v></x:c><x:c t='b'><x:v>1</x:v></x:c></x:row>"
                            "<x:row r='4'><x:c r='A4'><x:v>2.5E-1</x:v></x:c><x:c r='C4' "
                            "s='1'><x:v>1.75</x:v></x:c><x:c r='D4' t='e'><x:v>#N/A</x:v></x:c></x:row>"
                            "</x:sheetData></x:worksheet>";
  const std::vector<std::pair<std::string, std::string>> parts{
      {"_rels/.rels", "<R><Relationship Id='a' Type='t/officeDocument' Target='/book/w.xml'/></R>"},
      {"book/w.xml",
       "<workbook xmlns:r='r'><sheets><sheet name='Chart' r:id='c'/><sheet name='S' r:id='s'/></sheets></workbook>"},
      {"book/_rels/w.xml.rels", "<R><Relationship Id='s' Type='t/worksheet' Target='../one.xml'/><Relationship Id='c' "
                                "Type='t/chartsheet' Target='c'/>"
                                "<Relationship Id='f' Type='t/styles' Target='./f.xml'/><Relationship Id='t' "
                                "Type='t/sharedStrings' Target='t.xml'/></R>"},
      {"book/f.xml", "<s><numFmts><numFmt numFmtId='170' formatCode='hh:mm'/></numFmts><cellStyleXfs><xf "
                     "numFmtId='14'/></cellStyleXfs>"
                     "<cellXfs><xf numFmtId='0'/><xf numFmtId='170'/></cellXfs></s>"},
      {"book/t.xml", "<sst><si><r><t>o</t></r><r><t>k</t></r></si></sst>"},
      {"one.xml", sheet}};
  EXPECT_THAT(read(parts), ElementsAre("a:6; at:11; ok:5", "2; 12:00:00; 1", "0.25; 1900-01-01 18:00:00; NULL"));
  // Cells in no order: the last of those of one place counts.
  auto mixed = parts;
  mixed[5].second =
      "<w><row r='3'><c r='B3'><v>4</v></c><c r='A3'><v>3</v></c></row><row r='1'><c r='B1' t='str'><v>b</v>"
      "</c><c r='A1' t='str'><v>a</v></c></row><row r='2'><c r='B2'><v>0</v></c><c r='A2'><v>1</v></c>"
      "<c r='B2'><v>2</v></c></row></w>";
  EXPECT_THAT(read(mixed), ElementsAre("a:3; b:3", "1; 2", "3; 4"));
  auto without_texts = parts;
  without_texts[4].second = "<sst/>";
  EXPECT_THAT(read(without_texts), ElementsAre("text 0 of a cell is missing."));
  auto with_entities = parts;
  with_entities[5].second = "<!DOCTYPE w [<!ENTITY a 'b'>]><w/>";
  EXPECT_THAT(read(with_entities), ElementsAre("part one.xml is not valid XML: document type declarations are not "
                                               "supported, in line 1."));
}

TEST_F(ZippedWorkbook, HasUnitsAndASecondLineInItsHeader) {
  const auto texts = [](std::initializer_list<const char*> cells) {
    std::string row = "<t:table-row>";
    for (const char* cell : cells)
      row += "<t:table-cell o:value-type='string'><x:p>" + std::string(cell) + "</x:p></t:table-cell>";
    return row + "</t:table-row>";
  };
  const std::string values = "<t:table-row><t:table-cell o:value-type='date' o:date-value='2011-01-31'/><t:table-cell "
                             "o:value-type='float' o:value='2.5'/><t:table-cell o:value-type='float' o:value='3'/>"
                             "</t:table-row>";
  EXPECT_THAT(read_ods(texts({"Weir"}) + texts({"Day", "Flow", ""}) + texts({"", "measured", "corrected"}) +
                       texts({"dd", "m3/s", "m3/s"}) + values + values),
              ElementsAre("Day:9; Flow:6; corrected:3", "2011-01-31; 2.5; 3", "2011-01-31; 2.5; 3"));
}

TEST_F(ZippedWorkbook, OdsCellsOfAllKinds) {
  EXPECT_THAT(
      read_ods("<t:table-row t:number-rows-repeated='3'><t:table-cell t:number-columns-repeated='16384'/></t:table-row>"
               "<t:table-row><t:table-cell o:value-type='string'><o:annotation><x:p>no</x:p></o:annotation><x:p>a<x:s "
               "x:c='2'/>"
               "<x:span>b</x:span></x:p><x:p>c</x:p></t:table-cell><t:table-cell o:value-type='string' "
               "o:string-value='t'/></t:table-row>"
               "<t:table-row t:number-rows-repeated='2'><t:table-cell o:value-type='percentage' o:value='0.5'/>"
               "<t:table-cell o:value-type='time' o:time-value='PT01H30M00.5S'/></t:table-row>"
               "<t:table-row><t:table-cell t:number-columns-repeated='2' o:value-type='boolean' "
               "o:boolean-value='true'/></t:table-row>"
               "<t:table-row t:number-rows-repeated='1048570'><t:table-cell/></t:table-row>"),
      ElementsAre("a  b\nc:6; t:10", "0.5; 01:30:01", "0.5; 01:30:01", "1; 1899-12-31"));
  EXPECT_THAT(read_ods("<t:table-row"), ElementsAre("part content.xml is not valid XML: not well-formed "
                                                    "(invalid token), in line 1."));
  EXPECT_THAT(read({{"contents.xml", "x"}}, "river.ods"), ElementsAre("part content.xml is missing."));
  EXPECT_THAT(read({{"contents.xml", "x"}}), ElementsAre("part xl/workbook.xml is missing."));
  EXPECT_THAT(read({{"contents.xml", "x"}}, "river.zip"), ElementsAre("the zip archive contains no workbook."));
  EXPECT_THAT(read({{"META-INF/manifest.xml", "<m:manifest xmlns:m='m'><m:encryption-data/></m:manifest>"},
                    {"content.xml", "x"}}),
              ElementsAre("the workbook is protected by a password; save a copy without it."));
}

} // namespace

} // namespace vesk
