// Opening, reading and writing files, with one sentence for each failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vesk {

// "Cannot <action> <file>: <the system's text for `error`>."
std::string file_failure(std::string_view action, std::string_view file, int error);

// A file cannot be opened, read or written: one sentence with path and cause.
class file_exception : public std::runtime_error {
public:
  explicit file_exception(const std::string& sentence) : std::runtime_error(sentence) {}
  file_exception(std::string_view action, std::string_view file, int error)
      : std::runtime_error(file_failure(action, file, error)), error_(error) {}

  int error() const { return error_; } // the system's number; 0 where none is known

private:
  int error_ = 0;
};

// The file could not be opened at all; nothing has been read or written.
class file_open_exception : public file_exception {
  using file_exception::file_exception;
};

// "<file>: not enough memory for its contents.", in place of a std::bad_alloc.
std::string memory_failure(std::string_view file);

// An open file, closed by the destructor.
class file_descriptor {
public:
  file_descriptor() = default;
  explicit file_descriptor(int number) : number_(number) {}
  file_descriptor(file_descriptor&& other) noexcept : number_(other.release()) {}
  file_descriptor& operator=(file_descriptor&& other) noexcept;
  ~file_descriptor();

  int get() const { return number_; }
  bool is_open() const { return number_ >= 0; }
  int release() noexcept;

private:
  int number_ = -1;
};

// Opens a file, a pipe or a device for reading. Throws file_open_exception; a directory counts as a file that cannot be
// opened.
file_descriptor open_for_reading(const std::filesystem::path& file);

// The size of a regular file. 0 for an empty file and for anything without a size, such as a pipe.
std::uint64_t size_of_regular_file(int file);

// Reads the rest of an open file or pipe. `name` is for the message of a file_exception. `goes_on`, if given, is called
// after each read with everything read so far; false stops reading. A device may never end.
std::string read_to_end(int file, std::string_view name, const std::function<bool(std::string_view)>& goes_on = {});

// Reads up to `size` bytes at `offset` into `first`, and once that is full up to `more` bytes into `second`, in one
// system call. Returns the number of bytes read, 0 at the end of the file. Throws file_exception.
std::size_t read_at(int file, std::uint64_t offset, void* first, std::size_t size, void* second, std::size_t more,
                    std::string_view name);

// Writes both pieces completely, one after the other, if possible in one system call. Throws file_exception.
void write_all(int file, std::string_view first, std::string_view second, std::string_view name);

// Lets the system start writing these bytes of a file to disk. Only a hint.
void start_writeback(int file, std::uint64_t offset, std::uint64_t size);

} // namespace vesk
