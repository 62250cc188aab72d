// Which file of the disk a name means, and whether its content is still what it was.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace vesk {

// A file as it was at one moment. Two equal ones are the same file with the same content, as far as the system says.
struct file_identity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;           // bytes
  std::int64_t changed_seconds = 0; // last change of the content, since 1970
  std::int64_t changed_nanoseconds = 0;

  friend bool operator==(const file_identity&, const file_identity&) = default;
};

// Of a regular file, links followed. Nothing for all else and when there is no such file.
std::optional<file_identity> identity_of(const std::filesystem::path& file);
std::optional<file_identity> identity_of(int descriptor);

} // namespace vesk
