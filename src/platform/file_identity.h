// Identifies a file on disk, and shows whether its content has changed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace vesk {

// The state of a file at one time. Two equal states are the same file with the same content, as far as the system
// knows.
struct file_identity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;           // bytes
  std::int64_t changed_seconds = 0; // last change of the content, since 1970
  std::int64_t changed_nanoseconds = 0;

  friend bool operator==(const file_identity&, const file_identity&) = default;
};

// Of a regular file; links are followed. Nothing for anything else, or if the file does not exist.
std::optional<file_identity> identity_of(const std::filesystem::path& file);
std::optional<file_identity> identity_of(int descriptor);

} // namespace vesk
