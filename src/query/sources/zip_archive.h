// A zip archive in memory.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vesk {

inline constexpr std::string_view zip_beginning("PK\x03\x04", 4);

class zip_archive {
public:
  // A part that unpacks to more is refused.
  static constexpr std::size_t largest_part = std::size_t{1} << 30;

  // The bytes must outlive this; `name` is the file's, for messages. Throws table_source_exception.
  zip_archive(std::span<const std::byte> bytes, std::string name);
  ~zip_archive();

  bool has(const std::string& part) const;

  // Unpacks a part piece by piece, until `take` returns false. Throws table_source_exception when it is missing or
  // damaged.
  void read(const std::string& part, const std::function<bool(std::string_view)>& take) const;

  const std::string& name() const { return name_; }

private:
  struct memory;
  [[noreturn]] void fail(std::string cause) const;

  std::string name_;
  std::unique_ptr<memory> memory_;
  void* archive_ = nullptr;
};

} // namespace vesk
