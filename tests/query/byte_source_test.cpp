// Files are read through windows: what is read does not depend on where they begin, memory does not grow with the file,
// and a file that becomes shorter meanwhile is reported.
#include "paradox_writer.h"
#include "peak_memory.h"
#include "query/sources/open_table_source.h"
#include "query/sources/text/csv_source.h"
#include "table_summary.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vesk {

namespace {

using testing::ThrowsMessage;

// Text of some windows in which rows, quotation marks and line ends occur at every position near a window's end.
std::string long_text() {
  std::string text(300'000, '#');
  text += "\nsite,note,flow\r\n";
  for (int i = 0; text.size() < 1'600'000; ++i) {
    text += "S" + std::to_string(i) + ",\"a \"\"b\"\"\r\n, " + std::string(static_cast<std::size_t>(i % 71), 'x');
    text += "\xc2\xb0\"," + std::to_string(i) + ".5\r\n" + (i % 9 == 0 ? "\r\n" : "");
  }
  return text;
}

TEST(ByteWindow, TextIsTheSameWholeAndInPieces) {
  const std::string text = long_text();
  const auto whole = print(*open_csv(std::as_bytes(std::span(text)), "river.csv"));
  EXPECT_GT(whole.size(), 10'000U);
  EXPECT_EQ(print(*open_csv(std::as_bytes(std::span(text)), "river.csv", true)), whole);
  for (const bool big_endian : {false, true}) {
    std::string wide = big_endian ? "\xfe\xff" : "\xff\xfe";
    const auto add = [&](unsigned unit) {
      const char low = static_cast<char>(unit & 0xff), high = static_cast<char>(unit >> 8);
      wide += {big_endian ? high : low, big_endian ? low : high};
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '\xc2') {
        for (const unsigned unit : {0xd83dU, 0xdca7U}) add(unit); // a character of two units
        ++i;
      } else {
        add(static_cast<unsigned char>(text[i]));
      }
    }
    auto expected = whole;
    for (std::string& line : expected)
      if (const std::size_t at = line.find("\xc2\xb0"); at != line.npos) line.replace(at, 2, "\xf0\x9f\x92\xa7");
    EXPECT_EQ(print(*open_csv(std::as_bytes(std::span(wide)), "river.csv", true)), expected) << big_endian;
  }
}

TEST(ByteWindow, RowsWithoutEndAreRefused) {
  const auto failure = [](const std::string& text) {
    try {
      open_csv(std::as_bytes(std::span(text)), "river.csv", true);
    } catch (const table_source_exception& error) {
      return error.cause();
    }
    return std::string("read");
  };
  const std::string much(9'000'000, 'x');
  EXPECT_EQ(failure("a,b\n1,2\n3,\"" + much), "the quotation mark in line 3 is not closed within 4194304 bytes.");
  EXPECT_EQ(failure("a,b\n1,2\n" + much), "the row that begins in line 3 is longer than 4194304 bytes.");
  EXPECT_EQ(failure("a,b\n1,\"2\n" + much.substr(0, 400'000)), "the quotation mark in line 2 is never closed.");
}

class LargeTable : public testing::TestWithParam<const char*> {
protected:
  static constexpr std::size_t file_size = 40'000'000;
  static constexpr const char* text =
      "a note that makes the rows long, so that there are not too many of them .........";

  // The same row again and again.
  void write() const {
    if (file.ends_with(".csv"))
      return repeat("site,flow,note\n", "A,1.5," + std::string(text) + std::string(400, '.') + "\n");
    if (file.ends_with(".dbf")) {
      const std::uint32_t records = file_size / 200;
      std::string header = "\x03\x6f\1\1";
      for (int i = 0; i < 4; ++i) header += static_cast<char>(records >> 8 * i & 0xff);
      header += {65, 0, static_cast<char>(200), 0};
      header.resize(32);
      header += std::string("SITE\0\0\0\0\0\0\0C\0\0\0\0", 16) + static_cast<char>(199);
      header.resize(64);
      std::string record = " " + std::string(text);
      record.resize(200, ' ');
      return repeat(header + '\r', record);
    }
    using enum paradox_writer::type;
    paradox_writer writer({{"site", alpha, 200}, {"flow", number}});
    for (std::size_t size = 0; size < file_size / 4; size += 208) writer.add({std::string(text), 1.5});
    writer.save(file);
  }

  void repeat(const std::string& beginning, const std::string& row) const {
    std::ofstream out(file, std::ios::binary);
    out << beginning;
    for (std::size_t size = beginning.size(); size + row.size() < file_size + beginning.size(); size += row.size())
      out << row;
    out << (file.ends_with(".dbf") ? row : "");
  }

  const temporary_folder folder;
  const std::string file = folder.file(std::string("river") + GetParam());
};

TEST_P(LargeTable, IsReadInLittleMemoryAndCannotBecomeShorterUnseen) {
  write();
  const peak_memory memory;
  const auto source = open_table_source(file);
  const auto rows = source->rows(0);
  std::size_t count = 0;
  while (rows->next()) count += !rows->value(0).is_null();
  EXPECT_GT(count, 40'000U);
  if (memory_is_measurable) {
    EXPECT_LT(memory.growth(), 2e6);
  }

  const auto cut = source->rows(0);
  EXPECT_TRUE(cut->next());
  std::filesystem::resize_file(file, 1'000'000);
  EXPECT_THAT(
      [&] {
        while (cut->next()) {
        }
      },
      ThrowsMessage<table_source_exception>(
          testing::MatchesRegex(".*: it became shorter while it was read: from [0-9]+ to 1000000 bytes\\.")));
}

INSTANTIATE_TEST_SUITE_P(Formats, LargeTable, testing::Values(".csv", ".dbf", ".db"),
                         [](const auto& format) { return std::string(format.param).substr(1); });

} // namespace

} // namespace vesk
