// Numbers out of a file's bytes, each read checked against the end.
#pragma once

#include "query/sources/table_source.h"

#include <bit>
#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace vesk {

static_assert(std::endian::native == std::endian::little, "numbers are copied as they stand in the file");

class byte_view {
public:
  byte_view() = default;
  // `name` is the file's, for messages; it must live as long as the view.
  byte_view(std::span<const std::byte> bytes, const std::string& name) : bytes_(bytes), name_(&name) {}

  std::size_t size() const { return bytes_.size(); }
  const char* data() const { return reinterpret_cast<const char*>(bytes_.data()); }

  // The little-endian number at `offset`. Throws table_source_exception when the file ends before.
  template <class T>
  T number(std::size_t offset) const {
    T result;
    std::memcpy(&result, text(offset, sizeof result).data(), sizeof result);
    return result;
  }

  std::string_view text(std::size_t offset, std::size_t size) const {
    if (offset > bytes_.size() || size > bytes_.size() - offset) fail_short(offset, size);
    return {data() + offset, size};
  }

  byte_view part(std::size_t offset, std::size_t size) const {
    text(offset, size);
    return {bytes_.subspan(offset, size), *name_};
  }

private:
  [[noreturn]] void fail_short(std::size_t offset, std::size_t size) const {
    throw table_source_exception(*name_, "", "",
                                 std::to_string(size) + (size == 1 ? " byte is" : " bytes are") + " missing at byte " +
                                     std::to_string(offset) + ": the file has only " + std::to_string(bytes_.size()) +
                                     ".");
  }

  std::span<const std::byte> bytes_;
  const std::string* name_ = nullptr;
};

} // namespace vesk
