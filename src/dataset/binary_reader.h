// Little-endian numbers and plain bytes out of a data file, with the place in it for messages.
//
// One pass from the first byte to the last. Small pieces are decoded from a buffer; long arrays go straight from the
// file into their place in memory. A piece that the file does not hold any more ends in a data_file_exception, before
// memory is taken for it.
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

// A section of the data file: its number and the member of the data set that it holds.
struct file_section {
  int number = 0;
  std::string_view name = "header"; // of static storage
};

// A file that is not an intact data file: "river.vki, section 12 (hydrodynamic_file), byte 48213: 4294967295 bytes of
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
  // The longest piece that `piece` hands out.
  static constexpr std::size_t longest_piece = std::size_t{64} << 10;

  // Reads the regular file `descriptor`, which stays the caller's, from its first byte on. `name` is for messages.
  binary_reader(int descriptor, std::string name);

  // Reads bytes in memory, which stay the caller's.
  binary_reader(std::string_view bytes, std::string name);

  binary_reader(const binary_reader&) = delete;
  binary_reader& operator=(const binary_reader&) = delete;

  std::uint64_t size() const { return size_; }
  std::uint64_t position() const { return size_ - left(); }
  std::uint64_t left() const { return beyond_ + static_cast<std::uint64_t>(end_ - next_); }

  // The section that is being read, for messages.
  const file_section& section() const { return section_; }
  void enter(const file_section& section) { section_ = section; }

  // A number of type T. `what` names it in the message when the file ends before it.
  template <class T>
  T number(const char* what) {
    return little_endian<T>(piece(sizeof(T), what));
  }

  // The next `size` bytes, at most `longest_piece`, in one piece that lives until the next read.
  const char* piece(std::size_t size, const char* what) {
    if (static_cast<std::size_t>(end_ - next_) < size) [[unlikely]]
      fetch(size, what);
    return std::exchange(next_, next_ + size);
  }

  // How many of the next bytes lie in memory already: a good size for the next `piece`.
  std::size_t at_hand() const { return static_cast<std::size_t>(end_ - next_); }

  // The next `size` bytes, which must be there, to `to`.
  void copy(void* to, std::size_t size);

  // The same, now or later: in a large file a second thread shares in the work, and `to` must stay until `finish`,
  // `drop` or the end of this object.
  void copy_array(void* to, std::size_t size);

  // Returns when all arrays have come. Throws file_exception.
  void finish();

  // Returns when nothing is written any more, whatever has come.
  void drop();

  // Passes over `size` bytes, which must be there.
  void skip(std::uint64_t size);

  // Throws the exception for something wrong at `offset` in the present section.
  [[noreturn]] void fail(std::uint64_t offset, std::string cause) const;

  // The same for something `wanted` that the bytes left cannot hold: "8 bytes of min_dt, but only 5 are left."
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
  std::size_t ahead_; // how much the next fetch reads: more and more, until an array goes past the buffer
  file_section section_;
  std::optional<shared_reading> long_arrays_; // of a large file
};

} // namespace vesk
