// Reads numbers from a file's bytes; each read is checked against the end.
#pragma once

#include "platform/counted.h"
#include "platform/little_endian.h"
#include "query/sources/table_source.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace vesk {

class byte_view {
public:
  byte_view() = default;
  // `name` is the file's, for messages; it must outlive the view.
  byte_view(std::span<const std::byte> bytes, const std::string& name) : bytes_(bytes), name_(&name) {}

  std::size_t size() const { return bytes_.size(); }
  const char* data() const { return reinterpret_cast<const char*>(bytes_.data()); }

  // The little-endian number at `offset`. Throws table_source_exception if the file ends before it.
  template <class T>
  T number(std::size_t offset) const {
    return little_endian<T>(text(offset, sizeof(T)).data());
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
                                 counted(size, "byte is", "bytes are") + " missing at byte " + std::to_string(offset) +
                                     ": the file has only " + std::to_string(bytes_.size()) + " bytes.");
  }

  std::span<const std::byte> bytes_;
  const std::string* name_ = nullptr;
};

} // namespace vesk
