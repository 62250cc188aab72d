// The bytes that a source reads: a file that it opened, or memory of its caller.
#pragma once

#include "platform/file_bytes.h"
#include "platform/file_io.h"
#include "query/sources/table_source.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>

namespace vesk {

class source_bytes {
public:
  // The bytes stay the caller's and must outlive this.
  source_bytes(std::span<const std::byte> bytes) : bytes_(bytes) {} // NOLINT: a conversion is meant

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

} // namespace vesk
