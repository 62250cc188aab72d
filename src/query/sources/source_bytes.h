// The bytes that a source reads: a file that it opened, or memory of its caller.
#pragma once

#include "platform/file_bytes.h"
#include "platform/file_io.h"
#include "query/sources/table_source.h"

#include <cstddef>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>

namespace vesk {

class source_bytes {
public:
  // The bytes stay the caller's and must outlive this.
  source_bytes(std::span<const std::byte> bytes) : bytes_(bytes) {}

  // Throws table_source_exception.
  static source_bytes of_file(const std::filesystem::path& file) {
    try {
      auto content = std::make_unique<file_bytes>(file);
      source_bytes result(content->bytes());
      result.file_ = std::move(content);
      return result;
    } catch (const file_exception& error) {
      throw table_source_exception(file.string(), error.what());
    }
  }

  std::span<const std::byte> get() const { return bytes_; }

private:
  std::unique_ptr<file_bytes> file_;
  std::span<const std::byte> bytes_;
};

// The file with the name of `table` and the first of these extensions that there is one with. Throws
// table_source_exception.
inline std::optional<source_bytes> beside(const std::filesystem::path& table,
                                          std::initializer_list<const char*> extensions) {
  for (const char* extension : extensions) {
    std::filesystem::path file = table;
    file.replace_extension(extension);
    std::error_code ignored;
    if (std::filesystem::is_regular_file(file, ignored)) return source_bytes::of_file(file);
  }
  return std::nullopt;
}

} // namespace vesk
