// A folder that exists during one test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace vesk {

class temporary_folder {
public:
  temporary_folder() {
    std::string name = (std::filesystem::temp_directory_path() / "vesk-test-XXXXXX").string();
    path = mkdtemp(name.data());
  }
  ~temporary_folder() { std::filesystem::remove_all(path); }
  temporary_folder(const temporary_folder&) = delete;
  temporary_folder& operator=(const temporary_folder&) = delete;

  std::string file(const std::string& name) const { return (path / name).string(); }
  void write(const std::string& name, const std::string& content) const {
    std::ofstream(path / name, std::ios::binary) << content;
  }
  std::string read(const std::string& name) const {
    std::ostringstream content;
    content << std::ifstream(path / name, std::ios::binary).rdbuf();
    return content.str();
  }

  std::filesystem::path path;
};

} // namespace vesk
