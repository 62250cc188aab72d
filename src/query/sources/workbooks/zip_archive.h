// A zip archive.
#pragma once

#include "query/sources/bytes/byte_source.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vesk {

inline constexpr std::string_view zip_beginning("PK\x03\x04", 4);

class zip_archive {
public:
  // Limits: the total size of all unpacked parts, and the ratio of a part's unpacked size to its size, which is below
  // 50 for sheets of real workbooks. Small parts may have any ratio.
  static constexpr std::size_t most_unpacked = std::size_t{1} << 30;
  static constexpr std::size_t largest_ratio = 200;
  static constexpr std::size_t little = std::size_t{1} << 20;

  // The bytes must outlive this object. Throws table_source_exception.
  explicit zip_archive(const byte_source& bytes);
  ~zip_archive();

  bool has(const std::string& part) const;

  // Unpacks a part piece by piece. Throws table_source_exception if it is missing or damaged, or unpacks to more than
  // `most` bytes.
  void read(const std::string& part, const std::function<void(std::string_view)>& take,
            std::size_t most = most_unpacked) const;

  const std::string& name() const { return bytes_.name(); }

private:
  struct reading;
  [[noreturn]] void fail(std::string cause) const;

  const byte_source& bytes_;
  std::unique_ptr<reading> reading_;
  void* archive_ = nullptr;
  mutable std::size_t unpacked_ = 0; // of all parts
};

} // namespace vesk
