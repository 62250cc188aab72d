// Files that end too early or have wrong bytes: refused in one sentence, never read as something else.
#include "query/sources/databases/dbf_source.h"
#include "query/sources/databases/paradox_source.h"
#include "query/sources/workbooks/ods_source.h"
#include "query/sources/workbooks/xls_source.h"
#include "query/sources/workbooks/xlsx_source.h"
#include "table_summary.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

namespace vesk {

namespace {

using opener = std::unique_ptr<table_source> (*)(std::span<const std::byte>, std::string);

struct damaged {
  const char* file;
  opener open;
};

std::string content_of(const char* file) {
  return temporary_folder().read(std::string(VESK_TEST_DATA "/tables/") + file);
}

std::unique_ptr<table_source> open_dbf_alone(std::span<const std::byte> bytes, std::string name) {
  return open_dbf(bytes, std::nullopt, std::move(name));
}
std::unique_ptr<table_source> open_dbf_with_memo(std::span<const std::byte> bytes, std::string name) {
  static const std::string memo = content_of("dbase_8b.dbt");
  return open_dbf(bytes, std::as_bytes(std::span(memo)), std::move(name));
}
std::unique_ptr<table_source> open_paradox_alone(std::span<const std::byte> bytes, std::string name) {
  return open_paradox(bytes, std::nullopt, std::move(name));
}

const damaged files[] = {{"cp1251.dbf", open_dbf_alone},   {"dbase_8b.dbf", open_dbf_with_memo},
                         {"date7.db", open_paradox_alone}, {"STORE.DB", open_paradox_alone},
                         {"date.xls", open_xls},           {"date.xlsx", open_xlsx},
                         {"issues.ods", open_ods}};

// All tables, or nothing when the file is refused. The bytes lie in a place of just their size, so that the sanitizer
// sees whatever reads behind them.
std::vector<std::string> read(const damaged& file, std::string_view content) {
  const std::vector<char> place(content.begin(), content.end());
  try {
    const auto source = file.open(std::as_bytes(std::span(place)), "cut");
    std::vector<std::string> lines;
    for (std::size_t t = 0; t < source->tables().size(); ++t)
      for (std::string& line : print(*source, t)) lines.push_back(std::move(line));
    return lines;
  } catch (const table_source_exception& error) {
    EXPECT_TRUE(std::string(error.what()).starts_with("cut") && std::string(error.what()).ends_with("."))
        << error.what();
    return {};
  }
}

TEST(DamagedFiles, CutAtAnyLengthAreRefusedOrLackNothing) {
  for (const damaged& file : files) {
    const std::string content = content_of(file.file);
    const std::vector<std::string> whole = read(file, content);
    ASSERT_FALSE(whole.empty()) << file.file;
    std::size_t refused = 0;
    for (std::size_t size = 0; size < content.size(); size += 1 + content.size() / 800) {
      const std::vector<std::string> cut = read(file, std::string_view(content).substr(0, size));
      if (cut.empty())
        ++refused;
      else
        EXPECT_EQ(cut, whole) << file.file << " cut to " << size;
    }
    EXPECT_GT(refused, 0U) << file.file;
  }
}

TEST(DamagedFiles, WithHugeNumbersInTheHeaderEndInASentence) {
  for (const damaged& file : files) {
    const std::string content = content_of(file.file);
    for (std::size_t at = 0; at + 4 <= std::min<std::size_t>(content.size(), 700); ++at) {
      std::string changed = content;
      changed.replace(at, 4, "\xff\xff\xff\x7f");
      read(file, changed);
    }
  }
}

} // namespace

} // namespace vesk
