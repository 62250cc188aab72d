// Writes little-endian numbers and plain bytes to a data file or to memory.
//
// Small pieces are collected in a buffer; long arrays are written directly.
#pragma once

#include "platform/file_io.h"
#include "platform/little_endian.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vesk {

class binary_writer {
public:
  // Writes to the open file `descriptor`, which the caller keeps. `name` is for messages.
  binary_writer(int descriptor, std::string name);

  // Appends to `memory`, which the caller keeps; `finish` is not needed.
  explicit binary_writer(std::string& memory) : bytes_(memory) {}

  binary_writer(const binary_writer&) = delete;
  binary_writer& operator=(const binary_writer&) = delete;

  // Throws file_exception, like all functions that write.
  template <class T>
  void number(T value) {
    bytes({reinterpret_cast<const char*>(&value), sizeof value});
  }
  void bytes(std::string_view piece) {
    if (descriptor_ >= 0 && bytes_.size() + piece.size() > buffer_size) return overflow(piece);
    bytes_.append(piece);
  }

  // Writes the rest of the buffer. Without this call it is lost.
  void finish();

private:
  static constexpr std::size_t buffer_size = std::size_t{256} << 10;

  void overflow(std::string_view piece);
  void write_out(std::string_view piece);

  int descriptor_ = -1; // -1: memory
  std::string name_;
  std::string buffer_;
  std::string& bytes_ = buffer_; // the buffer, or the caller's memory
  std::uint64_t written_ = 0;    // to the file
  std::uint64_t on_its_way_ = 0; // bytes that the system was asked to start writing to disk
};

// Accepts the same calls as binary_writer, but only counts the bytes.
class byte_counter {
public:
  template <class T>
  void number(T) {
    count_ += sizeof(T);
  }
  void bytes(std::string_view piece) { count_ += piece.size(); }
  std::uint64_t count() const { return count_; }

private:
  std::uint64_t count_ = 0;
};

} // namespace vesk
