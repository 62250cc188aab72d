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

  // The file when it was opened, before a byte of it was read; nothing if it is not a regular file.
  const std::optional<file_identity>& identity() const { return identity_; }

private:
  void read_from(int descriptor, std::string name);

  file_descriptor opened_;
  std::optional<file_identity> identity_;
  std::string bytes_; // of what has no size before it is read
  std::optional<binary_reader> reader_;
};

// Reads a data file over the freshly constructed `data` and reconciles it with its catalogue, if it has one. Returns
// what `data` does not have of the file. When that is nothing, the file is the origin of `data`; else it has none.
//
// Throws file_open_exception: there is no file to read. data_file_exception: it is damaged or not a data file.
// file_exception: the system failed to read it or has not enough memory for it. catalogue_exception. After any of them
// `data` is of no use.
reading_losses read_data_file(const std::filesystem::path& file, prevesk_dataset_data_type& data);

// Saves `data` in the current layout; the file takes its place only when all of it is on the disk. Returns the origin
// that a data set with this content has from then on: none where `file` is a device or a pipe.
//
// Throws file_open_exception: nothing can be written there. file_exception: writing failed. The old file stays in both.
file_origin save_data_file(const std::filesystem::path& file, const prevesk_dataset_data_type& data);

} // namespace vesk
