// Data files on the disk: reading with the buffer and past it, and opening and saving by name.
#include "dataset/vki_file.h"
#include "sample_data_set.h"
#include "temporary_folder.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

namespace vesk {
namespace {

// The sample with long series of all lengths around the sizes where reading takes another way.
prevesk_dataset_data_type long_data_set() {
  prevesk_dataset_data_type data = sample_data_set();
  for (const std::size_t length : {100u, 1023u, 1024u, 1025u, 5000u, 16384u, 20001u, 1u, 2000u}) {
    time_function_data_type function = sample_time_function(1);
    for (std::size_t i = 0; i < length; ++i)
      function.points.push_back({{static_cast<std::int32_t>(i), 7}, static_cast<double>(i * length)});
    data.time_functions.push_back(function);
  }
  data.comments = std::string(700000, 'c');
  for (std::uint32_t items : {6000u, 3u, 3u, 30000u}) data.segments.push_back(sample_segment(5, items, items));
  data.segments.edit(1).parameters.set(2, {99, 1.0}); // as many as before it and after it, with another number
  return data;
}

TEST(VkiFile, LongContentComesBackEqualFromFileAndFromPipe) {
  const temporary_folder folder;
  const auto data = long_data_set();
  save_data_file(folder.file("long.vki"), data);
  prevesk_dataset_data_type back;
  read_data_file(folder.file("long.vki"), back);
  EXPECT_EQ(back, data);
  ASSERT_EQ(back.segments.size(), 7u);
  EXPECT_TRUE(back.segments[4].parameters.isc_numbers().shares_with(back.segments[5].parameters.isc_numbers()));

  ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
  std::thread writer([&] { save_data_file(folder.file("pipe"), data); });
  prevesk_dataset_data_type piped;
  read_data_file(folder.file("pipe"), piped);
  writer.join();
  EXPECT_EQ(piped, data);
  EXPECT_TRUE(std::filesystem::is_fifo(folder.file("pipe")));
}

TEST(VkiFile, TheOriginIsTheFileAsItWasReadOrSaved) {
  const temporary_folder folder;
  const std::string name = folder.file("river.vki");
  prevesk_dataset_data_type data = sample_data_set();
  EXPECT_FALSE(data.origin.is_set());
  data.origin = save_data_file(name, data);
  EXPECT_EQ(data.origin.file, name);
  EXPECT_EQ(data.origin.identity, identity_of(std::filesystem::path(name)));
  prevesk_dataset_data_type back;
  read_data_file(name, back);
  EXPECT_EQ(back.origin.identity, data.origin.identity);
  std::filesystem::create_symlink("river.vki", folder.path / "link.vki");
  EXPECT_EQ(identity_of(folder.path / "link.vki"), data.origin.identity);

  const auto written = std::filesystem::last_write_time(name);
  std::filesystem::last_write_time(name, written + std::chrono::nanoseconds(1000000));
  EXPECT_NE(identity_of(std::filesystem::path(name)), back.origin.identity);
  std::filesystem::last_write_time(name, written);
  std::filesystem::copy_file(name, folder.path / "copy.vki");
  std::filesystem::rename(folder.path / "copy.vki", name); // the same bytes in another file
  EXPECT_NE(identity_of(std::filesystem::path(name)), back.origin.identity);
  EXPECT_FALSE(save_data_file("/dev/null", data).is_set());
  EXPECT_EQ(back.origin, file_origin()); // is not compared

  std::string bytes = folder.read("river.vki");
  bytes[0] = 8; // a newer version
  folder.write("river.vki", bytes);
  prevesk_dataset_data_type partly;
  EXPECT_TRUE(read_data_file(name, partly).any());
  EXPECT_FALSE(partly.origin.is_set());
}

TEST(VkiFile, ACutLongFileIsRefused) {
  const temporary_folder folder;
  save_data_file(folder.file("long.vki"), long_data_set());
  const auto size = std::filesystem::file_size(folder.file("long.vki"));
  for (std::uintmax_t cut = 1; cut < size; cut += 77777) {
    std::filesystem::resize_file(folder.file("long.vki"), size - cut);
    prevesk_dataset_data_type data;
    EXPECT_THROW(read_data_file(folder.file("long.vki"), data), data_file_exception) << cut;
  }
}

TEST(VkiFile, AFileThatCannotBeOpenedIsDistinctFromADamagedOne) {
  const temporary_folder folder;
  prevesk_dataset_data_type data;
  const auto failure = [&](const auto& act) -> std::string {
    try {
      act();
    } catch (const file_open_exception& error) {
      return error.what();
    }
    return "none";
  };
  const std::string missing = folder.file("no/river.vki"), here = folder.path.string();
  EXPECT_EQ(failure([&] { read_data_file(missing, data); }), "Cannot open " + missing + ": No such file or directory.");
  EXPECT_EQ(failure([&] { read_data_file(here, data); }), "Cannot open " + here + ": Is a directory.");
  EXPECT_EQ(failure([&] { save_data_file(missing, data); }),
            "Cannot write " + missing + ": No such file or directory.");
  EXPECT_EQ(failure([&] { save_data_file(here, data); }), "Cannot write " + here + ": Is a directory.");
  folder.write("empty.vki", "");
  EXPECT_THROW(read_data_file(folder.file("empty.vki"), data), data_file_exception);
}

// Large enough for a second thread that reads some of the arrays, and parts of the longest one.
TEST(VkiFile, ALargeFileThatTwoThreadsReadIsEqualOrRefused) {
  const temporary_folder folder;
  const std::string name = folder.file("large.vki");
  prevesk_dataset_data_type data = long_data_set();
  for (std::uint32_t k = 0; k < 120; ++k) {
    time_function_data_type function = sample_time_function(k);
    const std::size_t length = k == 60 ? 400000 : 1000 + 137 * k;
    for (std::size_t i = 0; i < length; ++i)
      function.points.push_back({{static_cast<std::int32_t>(i), 7}, static_cast<double>(i) + k * 1e6});
    data.time_functions.push_back(function);
  }
  save_data_file(name, data);
  const auto size = std::filesystem::file_size(name);
  for (int repeated = 0; repeated < 10; ++repeated) { // the threads share the work anew each time
    prevesk_dataset_data_type back;
    read_data_file(name, back);
    ASSERT_EQ(back, data);
  }

  std::filesystem::resize_file(name, size - 10);
  prevesk_dataset_data_type refused;
  EXPECT_THROW(read_data_file(name, refused), data_file_exception);

  save_data_file(name, data);
  prevesk_dataset_data_type cut;
  data_file opened(name);
  std::filesystem::resize_file(name, size / 2); // while it is read
  try {
    cut.read(opened.reader());
    ADD_FAILURE() << "half a file was read";
  } catch (const file_exception& error) {
    EXPECT_EQ(error.what(), "Cannot read " + name + ": it became shorter while it was read.");
  }
}

TEST(VkiFile, AFullDiskLeavesTheOldFileAndNothingElse) {
  const temporary_folder folder;
  folder.write("river.vki", "the old one");
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto former = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit tight{100000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &tight);
  std::string cause;
  try {
    save_data_file(folder.file("river.vki"), long_data_set());
  } catch (const file_exception& error) {
    cause = error.what();
  }
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, former);
  EXPECT_EQ(cause, "Cannot write " + folder.file("river.vki") + ": File too large.");
  EXPECT_EQ(folder.read("river.vki"), "the old one");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path), {}), 1);
}

} // namespace
} // namespace vesk
