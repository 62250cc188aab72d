// The user guide against what it describes: its example is run, and its tables are compared with the catalogue and the
// engine's keywords.
#include "run_program.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstring>
#include <regex>

namespace vesk {
namespace {

std::string content_of(const std::string& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  EXPECT_FALSE(content.str().empty()) << file;
  return content.str();
}

// White space as a browser shows it, so that lines may break anywhere.
std::string guide() {
  return std::regex_replace(content_of(USER_GUIDE), std::regex("\\s+"), " ");
}

std::string example(const std::string& id) {
  const std::string page = content_of(USER_GUIDE), begin = "<pre id=\"" + id + "\"><code>";
  const std::size_t first = page.find(begin) + begin.size();
  const std::string text = page.substr(first, page.find("</code></pre>", first) - first);
  EXPECT_EQ(text.find_first_of("<&"), text.npos) << "not plain text";
  return text;
}

TEST(UserGuide, TheModelThatIsBuiltFromTextRuns) {
  const temporary_folder folder;
  setenv("XDG_CONFIG_HOME", folder.path.c_str(), 1); // not the settings of who runs the tests
  folder.write("chain.inp", example("chain-inp"));
  const auto run = [&](std::vector<std::string> arguments) {
    const program_result result = run_program(VESK_RUN, arguments);
    EXPECT_EQ(result.status, 0) << result.err;
  };
  run({"-IMPORT", folder.file("chain.inp"), "--save", folder.file("chain.vki"), "-RUN"});
  const program_result shown = run_program(VESK_RESULTS, {"list", folder.file("chain.nc")});
  EXPECT_NE(shown.out.find("tracer"), std::string::npos) << shown.out << shown.err;
  const std::string table = folder.read("chain_tracer.csv");
  EXPECT_TRUE(table.ends_with("\n2024-07-01T00:00:00,5,6,6\n")) << table; // inflow 5, 172.8 kg in 172,800 m3 a day

  run({folder.file("chain.vki"), "--export", folder.file("chain.vkn")});
  run({folder.file("chain.vki"), "--import-network", folder.file("chain.vkn"), "--save", folder.file("chain-2.vki")});
}

TEST(UserGuide, TheLakeOfTheHydrodynamicFileRuns) {
  const temporary_folder folder;
  setenv("XDG_CONFIG_HOME", folder.path.c_str(), 1);
  folder.write("lake.cdl", example("lake-cdl"));
  folder.write("lake.inp", example("lake-inp"));
  const auto run = [&](const char* program, std::vector<std::string> arguments) {
    const program_result result = run_program(program, arguments);
    EXPECT_EQ(result.status, 0) << result.err;
  };
  run(NCGEN, {"-o", folder.file("lake.hyd"), folder.file("lake.cdl")});
  run(VESK_RUN, {"-IMPORT", folder.file("lake.inp"), "--read-hyd", "--export", folder.file("lake-2.inp")});
  std::string network = folder.read("lake-2.inp");
  for (const char* point : {"BOUNDFUNC 1 1 1 0 ", "BOUNDFUNC 1 1 2 2 "}) {
    const std::size_t value = network.find(point) + std::strlen(point);
    ASSERT_EQ(network.substr(value, 2), "0\n") << point;
    network.replace(value, 1, "10");
  }
  folder.write("lake-2.inp", network);
  run(VESK_RUN, {"-IMPORT", folder.file("lake-2.inp"), "--save", folder.file("lake-2.vki"), "-RUN"});
  const std::string table = folder.read("lake-2_tracer.csv");
  double inlet = 0, basin = 0;
  ASSERT_EQ(std::sscanf(table.c_str() + table.rfind("\n2024-06-03T"), "%*[^,],%lf,%lf", &inlet, &basin), 2) << table;
  EXPECT_NEAR(inlet, 10, 0.05);
  EXPECT_NEAR(basin, 2.5, 0.05);
}

TEST(UserGuide, DescribesEveryKeywordOfTheTextForms) {
  const std::string page = guide(), source = content_of(KEYWORD_TABLE);
  const std::regex row("\\{\\.name = \"([A-Z]+)\"");
  int count = 0;
  for (std::sregex_iterator it(source.begin(), source.end(), row), end; it != end; ++it, ++count)
    EXPECT_NE(page.find("<tr><td><code>" + (*it)[1].str() + "</code> <i>"), page.npos) << (*it)[1];
  EXPECT_GT(count, 90);
}

TEST(UserGuide, ListsTheItemsOfTheCatalogue) {
  sqlite3* catalogue = nullptr;
  ASSERT_EQ(sqlite3_open_v2(CATALOGUE_FILE, &catalogue, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  const std::string page = guide();
  const auto compare = [&](const char* rows, int least) {
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(catalogue, rows, -1, &statement, nullptr), SQLITE_OK) << sqlite3_errmsg(catalogue);
    int count = 0;
    for (; sqlite3_step(statement) == SQLITE_ROW; ++count) {
      const std::string row = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
      EXPECT_NE(page.find("<tr>" + row + "</tr>"), page.npos) << row;
    }
    EXPECT_GE(count, least);
    sqlite3_finalize(statement);
  };
  for (const char* table : {"Constants", "Parameters"})
    compare(("select printf('<td>%d</td><td>%s</td><td>%g</td><td>%g</td><td>%g</td>', ISC_number, Description, "
             "\"Default\", Minimum, Maximum) from " +
             std::string(table))
                .c_str(),
            8);
  compare("select printf('<td>%d</td><td>%s</td>', ISC_number, Description) from Time_functions", 4);
  compare("select printf('<td>%d</td><td>%s</td><td>%s</td><td>%s</td><td>%s</td>', ISC_number, Description, Units, "
          "Short_Desc, Csv_filename) from output_control",
          24);
  sqlite3_close(catalogue);
}

// All texts of the sources, a line each; texts that C++ joins are one.
std::string texts_of_sources() {
  static const std::regex text("\"(([^\"\\\\\n]|\\\\.)*)\"");
  std::string all;
  for (const char* folder : {SOURCE_FOLDER "/src", SOURCE_FOLDER "/reference_engine"})
    for (const auto& file : std::filesystem::recursive_directory_iterator(folder)) {
      if (file.path().extension() != ".cpp" && file.path().extension() != ".h") continue;
      const std::string source = std::regex_replace(content_of(file.path()), std::regex("\"\\s*\n\\s*\""), "");
      for (std::sregex_iterator it(source.begin(), source.end(), text), end; it != end; ++it)
        all += std::regex_replace((*it)[1].str(), std::regex("\\\\(\")"), "$1") + "\n";
    }
  return all;
}

// Messages are in the first column, one a line, with three dots or italics for names and numbers.
TEST(UserGuide, QuotesMessagesAsTheProgramsPrintThem) {
  const std::string page = guide(), sources = texts_of_sources();
  const std::size_t begin = page.find("<table class=\"messages\">");
  const std::string table = page.substr(begin, page.find("</table>", begin) - begin);
  const std::regex row("<tr><td>(.*?)</td>"), gap("\\.\\.\\.|</?[a-z]+>"), ends("^[ :,)]+| +$");
  int count = 0;
  for (std::sregex_iterator it(table.begin(), table.end(), row), end; it != end; ++it) {
    const std::string messages = (*it)[1].str();
    for (std::sregex_token_iterator part(messages.begin(), messages.end(), gap, -1), last; part != last; ++part) {
      const std::string words = std::regex_replace(part->str(), ends, "");
      if (words.size() < 13) continue; // "Cannot open" is put together of words
      EXPECT_NE(sources.find(words), sources.npos) << words;
      ++count;
    }
  }
  EXPECT_GT(count, 80);
}

} // namespace
} // namespace vesk
