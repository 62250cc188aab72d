// How a file version is shown: major and minor number.
#pragma once

#include <cstdint>
#include <string>

namespace vesk {

inline std::string file_version_text(std::uint32_t version) {
  return std::to_string(version >> 16) + "." + std::to_string(version & 0xffff);
}

} // namespace vesk
