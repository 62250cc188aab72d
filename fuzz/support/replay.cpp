// Replays inputs: files, and all files of folders. What a target does wrong ends the program; the input is then the one
// of the last line.
#include "memory_limit.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

int main(int count, char** arguments) {
  namespace fs = std::filesystem;
  constexpr unsigned longest = 20; // seconds for an input
  std::vector<fs::path> files;
  for (const fs::path path : std::vector<std::string>(arguments + 1, arguments + count)) {
    if (!fs::is_directory(path))
      files.push_back(path);
    else
      std::copy_if(fs::recursive_directory_iterator(path), {}, std::back_inserter(files),
                   [](const fs::path& file) { return fs::is_regular_file(file); });
  }
  std::sort(files.begin(), files.end());
  vesk::fuzz::limit_memory();
  for (const fs::path& file : files) {
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::puts("cannot be read."), 2;
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    alarm(longest);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    alarm(0);
  }
  return files.empty() ? 2 : 0;
}
