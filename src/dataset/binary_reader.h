// Reads little-endian numbers and plain bytes from a data file. Messages give the position.
//
// One pass from the first byte to the last. Small pieces are decoded from a buffer; long arrays are read directly into
// their final memory. A piece longer than the rest of the file throws data_file_exception before memory is allocated
// for it.
#pragma once

#include "platform/little_endian.h"
#include "platform/shared_reading.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace vesk {

// A section of the data file: its number, and the data set member that it contains.
struct file_section {
  int number = 0;
  std::string_view name = "header"; // static storage
};

// The file is not an intact data file: "river.vki, section 12 (hydrodynamic_file), byte 48213: 4294967295 bytes of
// text, but only 96 are left."
class data_file_exception : public std::runtime_error {
public:
  data_file_exception(std::string_view file, file_section section, std::uint64_t offset, std::string cause);

  const file_section& section() const { return section_; }
  std::uint64_t offset() const { return offset_; }    // of the first wrong byte
  const std::string& cause() const { return cause_; } // ends with a full stop

private:
  file_section section_;
  std::uint64_t offset_;
  std::string cause_;
};

class binary_reader {
public:
  // The longest piece that `piece` returns.
  static constexpr std::size_t longest_piece = std::size_t{64} << 10;

  // Reads the regular file `descriptor`, which the caller keeps, from its first byte. `name` is for messages.
  binary_reader(int descriptor, std::string name);

  // Reads bytes in memory, which the caller keeps.
  binary_reader(std::string_view bytes, std::string name);

  binary_reader(const binary_reader&) = delete;
  binary_reader& operator=(const binary_reader&) = delete;

  std::uint64_t size() const { return size_; }
  std::uint64_t position() const { return size_ - left(); }
  std::uint64_t left() const { return beyond_ + static_cast<std::uint64_t>(end_ - next_); }

  // The section being read, for messages.
  const file_section& section() const { return section_; }
  void enter(const file_section& section) { section_ = section; }

  // A number of type T. `what` names it in the message if the file ends before it.
  template <class T>
  T number(const char* what) {
    return little_endian<T>(piece(sizeof(T), what));
  }

  // The next `size` bytes, at most `longest_piece`, contiguous and valid until the next read.
  const char* piece(std::size_t size, const char* what) {
    if (static_cast<std::size_t>(end_ - next_) < size) [[unlikely]]
      fetch(size, what);
    return std::exchange(next_, next_ + size);
  }

  // How many of the next bytes are already in memory: a good size for the next `piece`.
  std::size_t at_hand() const { return static_cast<std::size_t>(end_ - next_); }

  // Copies the next `size` bytes, which must exist, to `to`.
  void copy(void* to, std::size_t size);

  // The same, now or later: a second thread helps with large files, and `to` must be valid until `finish`, `drop` or
  // the end of this object.
  void copy_array(void* to, std::size_t size);

  // Returns when all arrays have been read. Throws file_exception.
  void finish();

  // Returns when nothing is being written any more, even if arrays are incomplete.
  void drop();

  // Skips `size` bytes, which must exist.
  void skip(std::uint64_t size);

  // Throws an exception for a fault at `offset` in the current section.
  [[noreturn]] void fail(std::uint64_t offset, std::string cause) const;

  // The same for something `wanted` that does not fit in the rest of the file: "8 bytes of min_dt, but only 5 are
  // left."
  [[noreturn]] void fail_short(std::uint64_t offset, const std::string& wanted) const;

private:
  void fetch(std::size_t size, const char* what);
  std::size_t read(void* to, std::size_t size, std::size_t ahead);

  std::string name_;
  int descriptor_ = -1; // -1: all bytes are in memory
  std::uint64_t size_ = 0;
  std::uint64_t beyond_ = 0;       // bytes of the file after end_
  std::unique_ptr<char[]> buffer_; // null when all bytes are in memory
  const char* next_ = nullptr;
  const char* end_ = nullptr;
  std::size_t ahead_; // size of the next fetch: grows until an array bypasses the buffer
  file_section section_;
  std::optional<shared_reading> long_arrays_; // for a large file
};

} // namespace vesk
