#include "memory_catalogue_store.h"
#include "old_data_file.h"
#include "sample_data_set.h"

#include "dataset/binary_reader.h"
#include "dataset/binary_writer.h"
#include "dataset/vki_reader.h"

#include <fstream>
#include <gtest/gtest.h>
#include <new>
#include <sys/resource.h>
#include <unistd.h>

namespace vesk {
namespace {

using namespace std::string_literals;

constexpr std::uint32_t known_versions[] = {0x00010000, 0x00010001, 0x00010002, 0x00010006, 0x00010007,
                                            0x00010008, 0x00010009, 0x00070000, 0x00070001, 0x00070002,
                                            0x00070003, 0x00070004, 0x00070005, 0x00070006, 0x00070007};

std::string bytes_of(const prevesk_dataset_data_type& data) {
  std::string bytes;
  binary_writer writer(bytes);
  data.write(writer);
  return bytes;
}

prevesk_dataset_data_type stored_in(std::string_view bytes) {
  prevesk_dataset_data_type data;
  data.skip_date = data.skip_time = 0; // not the clock's, for files that lack them
  binary_reader reader(bytes, "river.vki");
  read_vki(reader, data);
  return data;
}

// The sentence that refuses the bytes; empty when they are read.
std::string refusal(std::string_view bytes) {
  try {
    stored_in(bytes);
  } catch (const data_file_exception& error) {
    return error.what();
  }
  return "";
}

std::uint32_t u32_at(const std::string& bytes, std::size_t offset) {
  std::uint32_t value;
  std::memcpy(&value, bytes.data() + offset, 4);
  return value;
}

TEST(Vki, ASegmentRecordHasTheBytesOfTheFormat) {
  prevesk_dataset_data_type data;
  segment_data_type segment;
  segment.parameters.push_back({0x0b, 1.0});
  segment.systems.push_back({0x15, 2.0, 0.5});
  segment.volume = -2;
  segment.segment_type = 0x01020304;
  segment.bottom_segment = -1;
  segment.name = "Mouth";
  segment.minimum_depth = 1;
  data.segments = {segment};
  const std::string record = "\x01\0\0\0"s // parameters
                             "\x0b\0\0\0"
                             "\0\0\0\0\0\0\xf0\x3f"s //
                             "\x01\0\0\0"s           // systems
                             "\x15\0\0\0"
                             "\0\0\0\0\0\0\0\x40"
                             "\0\0\0\0\0\0\xe0\x3f"s //
                             "\0\0\0\0\0\0\0\xc0"s +
                             std::string(32, '\0') + // volume and four more
                             "\x04\x03\x02\x01"
                             "\xff\xff\xff\xff"s // type, segment beneath
                             "\x05\0\0\0Mouth"s +
                             std::string(32, '\0') +  // name, length and three more
                             "\0\0\0\0\0\0\xf0\x3f"s; // minimum depth
  const std::string bytes = bytes_of(data);
  EXPECT_EQ(bytes.substr(20, 4 + record.size()), "\x01\0\0\0"s + record);
  EXPECT_EQ(stored_in(bytes).segments, data.segments);
}

TEST(Vki, ADataSetComesBackEqualAndIsWrittenWithTheSameBytes) {
  const prevesk_dataset_data_type data = sample_data_set();
  const std::string bytes = bytes_of(data);
  const prevesk_dataset_data_type back = stored_in(bytes);
  EXPECT_EQ(back, data);
  EXPECT_EQ(bytes_of(back), bytes);
  EXPECT_EQ(bytes_of(old_data_set(0x00070007)), old_data_file(0x00070007)); // the writer against bytes by hand
}

TEST(Vki, TheHeaderPointsAtTheProjectFiles) {
  prevesk_dataset_data_type data;
  std::string bytes = bytes_of(data);
  EXPECT_EQ(bytes.substr(0, 4), "\x07\0\x07\0"s);
  EXPECT_EQ(u32_at(bytes, 4), bytes.size() - 4);
  EXPECT_EQ(u32_at(bytes, 8), 0u);
  data.project_files = {"a.vki", ""};
  bytes = bytes_of(data);
  EXPECT_EQ(u32_at(bytes, 4), bytes.size() - 17);
}

TEST(Vki, EveryVersionIsReadWithDefaultsForWhatItLacks) {
  for (const std::uint32_t version : known_versions) {
    SCOPED_TRACE(version);
    const std::string bytes = old_data_file(version);
    prevesk_dataset_data_type expected = old_data_set(version);
    if (version < 0x00070003) expected.skip_date = expected.skip_time = 0;
    EXPECT_EQ(stored_in(bytes), expected);

    // Read by the program it is of the current version, and a saved copy of it too.
    prevesk_dataset_data_type data;
    binary_reader reader(bytes, "old.vki");
    data.read(reader);
    EXPECT_EQ(data.file_version, 0x00070007u);
    expected.file_version = 0x00070007;
    expected.skip_date = data.skip_date;
    expected.skip_time = data.skip_time;
    EXPECT_EQ(bytes_of(data), bytes_of(expected));
    EXPECT_EQ(stored_in(bytes_of(data)), expected);
  }
}

TEST(Vki, ReadingReconcilesWithTheCatalogue) {
  auto store = small_catalogue();
  prevesk_dataset_data_type data(read_catalogue(store));
  const std::string bytes = old_data_file(0x00070007);
  binary_reader reader(bytes, "river.vki");
  data.read(reader);
  ASSERT_EQ(data.parameters.size(), 2u); // the file has 11 of the catalogue's 11 and 12
  EXPECT_EQ(data.parameters[0].scale, 2);
  EXPECT_EQ(data.parameters[1].scale, 1);
  EXPECT_EQ(data.segments[0].parameters[0].value, 1);
  EXPECT_EQ(data.segments[0].parameters[1].value, 0); // the file has no parameter 12, whatever its segments hold
}

TEST(Vki, TextsAreCutWhereTheyAreShortAndAnyFlagThatIsNot0IsTrue) {
  prevesk_dataset_data_type data;
  data.project_files = {std::string(255, 'x'), "next"};
  std::string bytes = bytes_of(data);
  bytes.replace(bytes.size() - 267, 259, "\x2c\x01\0\0"s + std::string(255, 'x') + std::string(45, 'y')); // 300 bytes
  EXPECT_EQ(stored_in(bytes).project_files, data.project_files);
  bytes.replace(bytes.find("xxxyy"), 5, "xx\u20ac"); // a character that the cut would split; the length stays
  EXPECT_EQ(stored_in(bytes).project_files[0], std::string(254, 'x'));
  EXPECT_EQ(stored_in(bytes).project_files[1], "next");
  data.project_files.clear();
  data.negative_solution = true;
  bytes = bytes_of(data);
  const std::size_t flags = bytes.find("\x01\x01\0\0"s, 400); // the four options
  bytes[flags + 1] = '\xff';
  EXPECT_EQ(stored_in(bytes), stored_in(bytes_of(data)));
}

TEST(Vki, ACutAtEveryLengthIsRefusedWithItsPlace) {
  for (const std::uint32_t version : {0x00010001u, 0x00070001u, 0x00070007u}) {
    const std::string bytes = old_data_file(version);
    int section = 0;
    for (std::size_t length = 0; length < bytes.size(); ++length) {
      try {
        stored_in(std::string_view(bytes).substr(0, length));
        FAIL() << version << " cut to " << length << " bytes is read";
      } catch (const data_file_exception& error) {
        ASSERT_LE(error.offset(), length);
        ASSERT_GE(error.section().number, section);
        ASSERT_LE(error.section().number, 41);
        section = error.section().number;
      }
    }
    EXPECT_EQ(section, version == 0x00070007 ? 41 : version == 0x00070001 ? 32 : 28);
  }
}

TEST(Vki, RefusalsNameFileSectionByteAndCause) {
  prevesk_dataset_data_type data; // sections 1 to 7 are empty lists
  const std::string bytes = bytes_of(data);
  const auto with = [&](std::size_t offset, const std::string& piece) {
    std::string changed = bytes;
    return changed.replace(offset, piece.size(), piece);
  };
  const std::string left = std::to_string(bytes.size() - 16), huge = "\xff\xff\xff\xff";
  const std::size_t comments = bytes.find("\x1b\0\0\0Unnamed"s) - 4;
  EXPECT_EQ(refusal(""), "river.vki, section 0 (header), byte 0: 4 bytes of version, but only 0 are left.");
  EXPECT_EQ(refusal("\7"), "river.vki, section 0 (header), byte 0: 4 bytes of version, but only 1 is left.");
  EXPECT_EQ(refusal(with(12, "\5\0\0\0"s).substr(0, 17)),
            "river.vki, section 1 (print_intervals.points), byte 12: 5 points, but only 1 byte is left.");
  EXPECT_EQ(refusal("{\"segments\": []}"),
            "river.vki, section 0 (header), byte 0: not a data file: unknown version 0x6573227b.");
  EXPECT_EQ(refusal("\x09\0\0\0"s),
            "river.vki, section 0 (header), byte 0: not a data file: unknown version 0x00000009.");
  EXPECT_EQ(refusal(with(12, huge)), "river.vki, section 1 (print_intervals.points), byte 12: 4294967295 "
                                     "points, but only " +
                                         left + " bytes are left.");
  EXPECT_EQ(refusal(with(comments, huge)), "river.vki, section 10 (comments), byte " + std::to_string(comments) +
                                               ": 4294967295 bytes of text, but only " +
                                               std::to_string(bytes.size() - comments - 4) + " are left.");
  EXPECT_EQ(refusal(bytes.substr(0, bytes.size() - 11)), "river.vki, section 39 (min_dt), byte " +
                                                             std::to_string(bytes.size() - 16) +
                                                             ": 8 bytes of min_dt, but only 5 are left.");
}

// While it lives, the process gets no more than `bytes` of memory beyond what it has. Sanitizers need theirs.
class memory_limit {
public:
  explicit memory_limit(rlim_t bytes) {
    getrlimit(RLIMIT_AS, &before_);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit tight{pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + bytes, before_.rlim_max};
    setrlimit(RLIMIT_AS, &tight);
#else
    (void)bytes;
#endif
  }
  ~memory_limit() {
    setrlimit(RLIMIT_AS, &before_);
  }

private:
  rlimit before_{};
};

TEST(Vki, NoHugeCountTakesMemoryBeyondTheFile) {
  // Any four bytes may be a count; those of numbers and texts change what is read or are refused, no more.
  for (const std::uint32_t version : {0x00010001u, 0x00070001u, 0x00070007u, 0x00070008u}) {
    std::string bytes = old_data_file(std::min(version, 0x00070007u));
    bytes[0] = static_cast<char>(version & 0xff);
    const memory_limit limit(4000000);
    for (const char* const count : {"\xff\xff\xff\xff", "\xff\xff\xff\x0f", "\xff\xff\x0f\0"})
      for (std::size_t offset = 4; offset + 4 <= bytes.size(); ++offset) {
        std::string changed = bytes;
        changed.replace(offset, 4, std::string(count, 4));
        try {
          stored_in(changed);
        } catch (const data_file_exception& error) {
          ASSERT_LE(error.offset(), bytes.size());
        } catch (const std::bad_alloc&) {
          FAIL() << "memory for the count at " << offset;
        }
      }
  }
}

TEST(Vki, ANewerVersionIsReadUntilItsBytesRunOut) {
  const prevesk_dataset_data_type whole = sample_data_set();
  std::string bytes = bytes_of(whole);
  bytes.replace(0, 4, "\x08\0\x07\0"s);
  bytes += "more"; // a section that only the newer version has
  prevesk_dataset_data_type data;
  binary_reader reader(bytes, "new.vki");
  const reading_losses losses = data.read(reader);
  EXPECT_EQ(losses.newer_version, 0x00070008u);
  EXPECT_EQ(losses.bytes_not_read, 4u);
  EXPECT_EQ(data.file_version, 0x00070008u);  // keeps its number
  EXPECT_EQ(bytes_of(data), bytes_of(whole)); // written with the number of the layout that is written
  data.file_version = whole.file_version;
  EXPECT_EQ(data, whole);
  bytes.resize(bytes.size() - 4);
  for (std::size_t length = 4; length < bytes.size(); ++length)
    ASSERT_EQ(refusal(std::string_view(bytes).substr(0, length)), "");

  // The print intervals' three points begin at byte 16: two and a half of them are there.
  const auto some = stored_in(std::string_view(bytes).substr(0, 16 + 40));
  ASSERT_EQ(some.print_intervals.points.size(), 2u);
  EXPECT_EQ(some.print_intervals.points[1], whole.print_intervals.points[1]);
  EXPECT_TRUE(some.segments.empty());
  EXPECT_EQ(some.exchange_fields.size(), 2u);

  // The first two of three segments are there, and nothing of the third.
  const std::size_t third = bytes.find("\x02\0\0\0\x0a\0\0\0"s);
  EXPECT_EQ(stored_in(std::string_view(bytes).substr(0, third)).segments.size(), 2u);
  EXPECT_EQ(stored_in(std::string_view(bytes).substr(0, third + 4)).segments.size(), 3u);

  bytes.replace(12, 4, "\xff\xff\xff\xff"s); // a wild count means what the rest can hold
  EXPECT_EQ(stored_in(bytes).print_intervals.points.size(), (bytes.size() - 16) / 16);
}

} // namespace
} // namespace vesk
