// The whole content of a file as bytes in memory.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>

namespace vesk {

// Files up to `copied_size` are copied, so that a program which cuts the file meanwhile does no harm. Larger ones, and
// only regular files, are mapped: they take no memory of their own, but must not become shorter while this lives.
class file_bytes {
public:
  static constexpr std::size_t copied_size = std::size_t{32} << 20;

  // Throws file_exception.
  explicit file_bytes(const std::filesystem::path& file);
  ~file_bytes();
  file_bytes(const file_bytes&) = delete;
  file_bytes& operator=(const file_bytes&) = delete;

  std::span<const std::byte> bytes() const { return {data_, size_}; }

private:
  std::unique_ptr<std::byte[]> copy_;
  const std::byte* data_ = nullptr;
  std::size_t size_ = 0;
};

} // namespace vesk
