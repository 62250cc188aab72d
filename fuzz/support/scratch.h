// Files for parsers that take a name: in a folder of the process, in memory where the system has such a place.
#pragma once

#include "demand.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace vesk::fuzz {

class scratch_folder {
public:
  scratch_folder() {
    std::error_code none;
    const bool in_memory = std::filesystem::exists("/dev/shm", none);
    std::string name = (in_memory ? "/dev/shm" : std::filesystem::temp_directory_path().string()) + "/vesk-fuzz-XXXXXX";
    demand(mkdtemp(name.data()), "no scratch folder");
    path = name;
  }
  ~scratch_folder() { std::filesystem::remove_all(path); }
  scratch_folder(const scratch_folder&) = delete;
  scratch_folder& operator=(const scratch_folder&) = delete;

  std::string write(const char* name, std::string_view content) const {
    const std::string file = (path / name).string();
    std::ofstream(file, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
    return file;
  }
  std::string read(const char* name) const {
    std::ifstream file(path / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::filesystem::path path;
};

inline std::string_view as_text(const std::uint8_t* bytes, std::size_t size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

} // namespace vesk::fuzz
