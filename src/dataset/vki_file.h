// Opens, reads and safely saves data files by name.
#pragma once

#include "dataset/binary_reader.h"
#include "dataset/dataset.h"
#include "platform/file_io.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vesk {

// An open data file, for one pass of reading.
class data_file {
public:
  // Throws file_open_exception.
  explicit data_file(const std::filesystem::path& file);

  // Reads the rest of `descriptor`, such as standard input.
  data_file(int descriptor, std::string name);

  binary_reader& reader() { return *reader_; }

  // The file when it was opened, before any byte was read; nothing if it is not a regular file.
  const std::optional<file_identity>& identity() const { return identity_; }

private:
  void read_from(int descriptor, std::string name);

  file_descriptor opened_;
  std::optional<file_identity> identity_;
  std::string bytes_; // of a file whose size is not known in advance
  std::optional<binary_reader> reader_;
};

// Reads a data file into the newly constructed `data` and reconciles it with its catalogue, if it has one. Returns
// everything in the file that `data` does not have. If that is nothing, the file becomes the origin of `data`;
// otherwise `data` has none.
//
// Throws file_open_exception: the file cannot be opened. data_file_exception: it is damaged or not a data file.
// file_exception: the system failed to read it or lacks the memory. catalogue_exception. After an exception `data` is
// unusable.
reading_losses read_data_file(const std::filesystem::path& file, prevesk_dataset_data_type& data);

// Saves `data` in the current layout. The target is replaced only when all of it is on disk. Returns the new origin of
// a data set with this content: none if `file` is a device or a pipe.
//
// Throws file_open_exception: the file cannot be opened for writing. file_exception: writing failed. In both cases the
// old file is kept.
file_origin save_data_file(const std::filesystem::path& file, const prevesk_dataset_data_type& data);

} // namespace vesk
