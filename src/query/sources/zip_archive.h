// A zip archive.
#pragma once

#include "query/sources/byte_source.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vesk {

inline constexpr std::string_view zip_beginning("PK\x03\x04", 4);

class zip_archive {
public:
  // A part that unpacks to more is refused.
  static constexpr std::size_t largest_part = std::size_t{1} << 30;

  // The bytes must outlive this. Throws table_source_exception.
  explicit zip_archive(const byte_source& bytes);
  ~zip_archive();

  bool has(const std::string& part) const;

  // Unpacks a part piece by piece, until `take` returns false. Throws table_source_exception when it is missing or
  // damaged.
  void read(const std::string& part, const std::function<bool(std::string_view)>& take) const;

  const std::string& name() const { return bytes_.name(); }

private:
  struct reading;
  [[noreturn]] void fail(std::string cause) const;

  const byte_source& bytes_;
  std::unique_ptr<reading> reading_;
  void* archive_ = nullptr;
};

} // namespace vesk
