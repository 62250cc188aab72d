// A file that appears under its name only when it is whole.
#ifndef REFERENCE_ENGINE_OUTPUT_OUTPUT_FILE_H
#define REFERENCE_ENGINE_OUTPUT_OUTPUT_FILE_H

#include <filesystem>

namespace reference_engine {

// Owns a temporary name beside the final one. Write to `temporary`, close, then `publish`, which takes the place of an
// older file. A file that is not published is removed, at the latest by the next run under its name.
class OutputFile {
public:
  explicit OutputFile(std::filesystem::path final_name);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::filesystem::path& temporary() const { return temporary_; }
  const std::filesystem::path& final_name() const { return final_; }
  void publish(); // throws RunError

private:
  std::filesystem::path final_, temporary_;
};

} // namespace reference_engine

#endif
