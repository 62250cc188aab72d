// Small files made to take much memory or time, and Cancel.
#include "peak_memory.h"
#include "query/import_query.h"
#include "query/sources/open_table_source.h"
#include "query/sources/workbooks/compound_file.h"
#include "run_program.h"
#include "sqlite_file.h"
#include "temporary_folder.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <minizip/zip.h>
#include <string_view>

namespace vesk {

namespace {

// A part of an archive: `repeated` so many times between the two others, so that a test need not hold it.
struct part {
  std::string name, before, repeated, after;
  std::size_t times = 1;
};

// 32,000 characters that pack to about a hundredth, if not the same ones come before them.
std::string packable_text(std::uint32_t random = 1) {
  std::string text;
  for (; text.size() < 400; random = random * 1664525 + 1013904223)
    text += static_cast<char>('a' + (random >> 24) % 16);
  return text + std::string(31'600, 'x');
}

class Bomb : public testing::Test {
protected:
  std::string write(const std::string& name, const std::vector<part>& parts) const {
    const std::string file = folder.file(name);
    const zipFile zip = zipOpen(file.c_str(), APPEND_STATUS_CREATE);
    for (const part& p : parts) {
      zipOpenNewFileInZip(zip, p.name.c_str(), nullptr, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, 1);
      const auto put = [&](const std::string& text) {
        zipWriteInFileInZip(zip, text.data(), static_cast<unsigned>(text.size()));
      };
      put(p.before);
      for (std::size_t i = 0; i < p.times; ++i) put(p.repeated);
      put(p.after);
      zipCloseFileInZip(zip);
    }
    zipClose(zip, nullptr);
    return file;
  }

  std::string workbook(part sheet, part texts = {"", "<sst>", "", "</sst>", 0}) const {
    sheet.name = "xl/s.xml";
    texts.name = "xl/t.xml";
    return write("river.xlsx", {{"xl/workbook.xml", "<w xmlns:r='r'><sheet name='S' r:id='s'/></w>", "", ""},
                                {"xl/_rels/workbook.xml.rels",
                                 "<R><Relationship Id='s' Type='t/worksheet' Target='s.xml'/><Relationship Id='t' "
                                 "Type='t/sharedStrings' Target='t.xml'/></R>",
                                 "", ""},
                                sheet,
                                texts});
  }

  // What a process prints of the file that may take 512 MB besides what the program itself takes.
  static std::string read(const std::string& file) {
    const std::string limit = memory_is_measurable ? "ulimit -v 600000; " : "";
    program_result result = run_program("/bin/sh", {"-c", limit + "exec \"$0\" \"$1\"", OPEN_TABLE, file});
    if (result.status != 0) return "status " + std::to_string(result.status) + result.err;
    if (result.out.starts_with(file)) result.out.erase(0, file.size() + 2);
    return result.out.substr(0, result.out.find('\n'));
  }

  const temporary_folder folder;
};

TEST_F(Bomb, XlsxIsRefusedByWhatItUnpacksTo) {
  const part blanks{"", "<s>", std::string(1 << 20, ' '), "</s>", 20};
  EXPECT_EQ(read(workbook(blanks)), "part xl/s.xml unpacks to more than 200 times its size.");
  EXPECT_EQ(read(workbook({}, blanks)), "part xl/t.xml unpacks to more than 200 times its size.");
  const part texts{"", "<sst>", "<si><t>" + packable_text() + "</t></si><si><t>" + packable_text(2) + "</t></si>",
                   "</sst>", 4'250};
  EXPECT_EQ(read(workbook({}, texts)), "its texts take more than 256 MB.");
  const part text{"", "<sst><si><t>", "€", "</t></si></sst>", 32'768};
  EXPECT_EQ(read(workbook({}, text)), "a text in it is longer than 32767 characters.");
  const part cell{"", "<s><row><c t='str'><v>", "&#65;", "</v></c></row></s>", 140'000};
  EXPECT_EQ(read(workbook(cell)), "a text in it is longer than 32767 characters.");
}

TEST_F(Bomb, PartsUnpackToOneGigabyteTogether) {
  if (!memory_is_measurable) GTEST_SKIP() << "takes a minute with a sanitizer";
  const part half{"", "<s>", packable_text() + packable_text(2), "</s>", 8'500};
  EXPECT_EQ(read(workbook(half, half)), "its parts unpack to more than 1073741824 bytes together.");
}

// The tag itself, those that are open, and the names that were seen.
TEST_F(Bomb, TagsTakeLittleMemory) {
  const std::string refusal = "part xl/s.xml is not valid XML: its tags are too long, nested too deeply "
                              "or have too many names, in line 1.";
  EXPECT_EQ(read(workbook({"", "<s a='", packable_text(), "'/>", 3'000})), refusal);
  EXPECT_EQ(read(workbook({"", "", "<a>", "", 300'000})), refusal);
  std::string names;
  for (int i = 0; i < 80'000; ++i) names += "<a" + std::to_string(i) + "/>";
  EXPECT_EQ(read(workbook({"", "<s>", names, "</s>"})), refusal);
}

// Many cells of the first rows show one long text, of which the header's search needs the beginning alone.
TEST_F(Bomb, LongTextsInTheFirstRowsAreReadInLittleMemory) {
  const std::string text = packable_text();
  std::string row = "<row>";
  for (int i = 0; i < 700; ++i) row += "<c t='s'><v>0</v></c>";
  row += "</row>";
  EXPECT_EQ(read(workbook({"", "<s>", row, "</s>", 200}, {"", "<sst><si><t>", text, "</t></si></sst>"})),
            text.substr(0, 1000));
}

TEST_F(Bomb, OdsIsRefused) {
  const std::string before = "<d xmlns:t='t' xmlns:x='x' xmlns:o='o'><t:table t:name='S'>", after = "</t:table></d>";
  const std::string file =
      write("river.ods", {{"content.xml", before + "<t:table-row><t:table-cell><x:p>", "<x:s x:c='1000'/>",
                           "</x:p></t:table-cell></t:table-row>" + after, 40}});
  EXPECT_EQ(read(file), "a text in it is longer than 32767 characters.");
  std::filesystem::remove(file);
  write("river.ods", {{"content.xml", before,
                       "<t:table-row t:number-rows-repeated='1000000'><t:table-cell t:number-columns-repeated='16384' "
                       "o:value-type='float' o:value='1'/></t:table-row>",
                       after}});
  if (memory_is_measurable) {
    EXPECT_EQ(read(file).substr(0, 7), "status "); // the cells that it keeps by right are more than this process may
    EXPECT_THAT([&] { open_table_source(file); },
                testing::ThrowsMessage<table_source_exception>(testing::EndsWith("has more than 33554432 cells.")));
  }
  write("many.ods", {{"content.xml", "<d xmlns:t='t'>", "<t:table t:name='S'/>", "</d>", 10'001}});
  EXPECT_EQ(read(folder.file("many.ods")), "it has more than 10000 sheets.");
}

// The size of a sparse file costs its sender nothing.
TEST_F(Bomb, SparseFilesTakeNoMemory) {
  const std::string xls = folder.file("river.xls");
  std::ofstream(xls, std::ios::binary) << compound_beginning << std::string(22, '\0') << std::string("\x09\0\x06", 3);
  std::filesystem::resize_file(xls, std::uintmax_t{5} << 30);
  EXPECT_EQ(read(xls), "it is larger than 4 GB, the limit for this kind of workbook.");

  const std::string dbf = folder.file("river.dbf");
  std::filesystem::copy_file(VESK_TEST_DATA "/tables/dbase_8b.dbf", dbf);
  std::filesystem::copy_file(VESK_TEST_DATA "/tables/dbase_8b.dbt", folder.file("river.dbt"));
  const auto read_all = [&](table_source& table) {
    const auto cursor = table.rows(0);
    while (cursor->next())
      for (std::size_t f = 0; f < table.fields(0).size(); ++f) cursor->value(f);
  };
  read_all(*open_table_source(dbf));
  std::fstream memo_file(folder.file("river.dbt"), std::ios::binary | std::ios::in | std::ios::out);
  memo_file.seekp(0, std::ios::end);
  const auto size = static_cast<std::size_t>(memo_file.tellp());
  for (std::size_t block = 512; block < size; block += 512) { // each text claims a gigabyte
    memo_file.seekp(static_cast<std::streamoff>(block + 4));
    memo_file.write("\0\0\0\x40", 4);
  }
  memo_file.close();
  std::filesystem::resize_file(folder.file("river.dbt"), std::uintmax_t{3} << 30);
  const peak_memory memory;
  EXPECT_THAT(
      [&] { read_all(*open_table_source(dbf)); },
      testing::ThrowsMessage<table_source_exception>(testing::EndsWith("the memo is longer than 524288 bytes.")));
  if (memory_is_measurable) {
    EXPECT_LT(memory.growth(), 20e6);
  }
}

// Cancelled at once, and at each later time that the reader asks.
TEST(Cancel, EndsTheReadingOfEveryFormat) {
  const auto read = [](const std::string& file) {
    const auto source = open_table_source(VESK_TEST_DATA "/tables/" + file);
    const auto rows = source->rows(0);
    while (rows->next()) rows->value(0);
  };
  for (const char* file : {"roanoke_daily.csv", "roanoke_daily.dbf", "roanoke_daily.db", "roanoke_daily.xls",
                           "roanoke_daily.xlsx", "roanoke_daily.ods", "compIndexTestV1997.mdb", "memo.db"}) {
    int asked = 0;
    {
      const cancellation_scope count([&] { return ++asked < 0; });
      read(file);
    }
    // The Access helper is waited for, so how often is asked there depends on the load of the machine.
    const bool waits = std::string_view(file).ends_with(".mdb");
    EXPECT_GE(asked, waits ? 1 : 2) << file;
    for (const int when : {1, 2, asked / 2, asked - 1}) {
      if (waits && when != 1) continue;
      int left = when;
      const cancellation_scope cancel([&] { return --left <= 0; });
      EXPECT_THROW(read(file), query_cancelled) << file << ", " << when << " of " << asked;
    }
    read(file);
  }
}

// A view that never gives a row, first asked for by the list of fields.
TEST(Cancel, EndsADatabaseThatNeverAnswers) {
  const temporary_folder folder;
  const std::string file = write_endless_sqlite(folder.file("river.sqlite"));
  int asked = 0;
  const cancellation_scope cancel([&] { return ++asked > 20; });
  import_query query;
  query.stored.file_name = file;
  query.stored.table_name = "flow";
  query.stored.date_time_field = "day";
  query.stored.value_field = "value";
  point_list points;
  EXPECT_THROW(query.execute({}, points), query_cancelled);
}

} // namespace

} // namespace vesk
