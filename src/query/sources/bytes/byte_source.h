// The bytes of a file, of memory, or of a stream inside a file. They are read only when needed, so that a large file
// takes no more memory than a small one.
#pragma once

#include "query/cancellation.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vesk {

class byte_source {
public:
  virtual ~byte_source() = default;
  byte_source(const byte_source&) = delete;
  byte_source& operator=(const byte_source&) = delete;

  const std::string& name() const { return name_; } // the file name, for messages
  std::uint64_t size() const { return size_; }      // when opened

  // Reads bytes, all of which must exist. Throws table_source_exception, also if the file has become shorter since it
  // was opened, and query_cancelled.
  void read(std::uint64_t offset, char* to, std::size_t size) const {
    stop_if_cancelled();
    check(offset, size);
    fetch(offset, to, size);
  }
  std::string text(std::uint64_t offset, std::size_t size) const;

  // The same for a memo. Memos are kept in memory as a whole, so longer ones are refused.
  static constexpr std::size_t longest_memo = std::size_t{512} << 10;
  std::string memo(std::uint64_t offset, std::size_t size) const;
  void check_memo(std::size_t size) const; // throws table_source_exception

  // Throws table_source_exception if the range goes beyond the end.
  void check(std::uint64_t offset, std::size_t size) const {
    if (offset > size_ || size > size_ - offset) fail_short(offset, size);
  }

  // The address of the bytes if they are in memory; otherwise nullptr.
  const char* in_memory() const { return in_memory_; }

  // Closes the file until the next read.
  virtual void let_go() {}

protected:
  byte_source(std::string name, std::uint64_t size, const char* in_memory = nullptr)
      : name_(std::move(name)), size_(size), in_memory_(in_memory) {}

private:
  virtual void fetch(std::uint64_t offset, char* to, std::size_t size) const = 0;
  [[noreturn]] void fail_short(std::uint64_t offset, std::size_t size) const;

  std::string name_;
  std::uint64_t size_;
  const char* in_memory_;
};

// Throws table_source_exception.
std::unique_ptr<byte_source> open_bytes(const std::filesystem::path& file);

// Bytes of the caller, which must outlive the result. `in_pieces`: read through windows, like a file.
std::unique_ptr<byte_source> bytes_in_memory(std::span<const std::byte> bytes, std::string name,
                                             bool in_pieces = false);

// The file with the name of `table` and the first of these extensions for which a file exists, ignoring case; null if
// there is none.
// Throws table_source_exception.
std::unique_ptr<byte_source> open_beside(const std::filesystem::path& table,
                                         std::initializer_list<const char*> extensions);

// A window on the bytes. Sequential reads fetch a whole window ahead; after a jump only the requested bytes are read.
class byte_window {
public:
  static constexpr std::size_t usual_size = std::size_t{64} << 10;

  // `source` must outlive this object.
  explicit byte_window(const byte_source& source, std::size_t size = usual_size) : source_(&source), ahead_(size) {}

  // The bytes, all of which must exist; valid until the next call. Throws table_source_exception.
  std::string_view at(std::uint64_t offset, std::size_t size);

  const byte_source& source() const { return *source_; }

private:
  const byte_source* source_;
  std::size_t ahead_;
  std::unique_ptr<char[]> place_;
  std::size_t room_ = 0, filled_ = 0;
  std::uint64_t begin_ = 0; // of the bytes in `place_`
};

} // namespace vesk
