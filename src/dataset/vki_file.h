// Data files by name: opening, reading and safe saving.
#pragma once

#include "dataset/binary_reader.h"
#include "dataset/dataset.h"
#include "platform/file_io.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vesk {

// A data file that is open for one pass of reading.
class data_file {
public:
  // Throws file_open_exception.
  explicit data_file(const std::filesystem::path& file);

  // All that is left to read from `descriptor`, such as standard input.
  data_file(int descriptor, std::string name);

  binary_reader& reader() { return *reader_; }

private:
  void read_from(int descriptor, std::string name);

  file_descriptor opened_;
  std::string bytes_; // of what has no size before it is read
  std::optional<binary_reader> reader_;
};

// Reads a data file over the freshly constructed `data` and reconciles it with its catalogue, if it has one.
// Afterwards a `file_version` above the current one says that the file is of a newer version.
//
// Throws file_open_exception: there is no file to read. data_file_exception: it is damaged or no data file.
// file_exception: the system failed to read it or has not enough memory for it. catalogue_exception. After any of them
// `data` is of no use.
void read_data_file(const std::filesystem::path& file, prevesk_dataset_data_type& data);

// Saves `data` in the current layout; the file takes its place only when all of it is on the disk.
//
// Throws file_open_exception: nothing can be written there. file_exception: writing failed. The old file stays in both.
void save_data_file(const std::filesystem::path& file, const prevesk_dataset_data_type& data);

} // namespace vesk
