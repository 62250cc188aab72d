// A file that appears under its final name only when it is complete.
#ifndef REFERENCE_ENGINE_OUTPUT_OUTPUT_FILE_H
#define REFERENCE_ENGINE_OUTPUT_OUTPUT_FILE_H

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <utility>

namespace reference_engine {

// Until then the file has an unpredictable name: `base`, then ".part-HOST-PROCESS-" and 16 random hexadecimal digits.
// It is always newly created, so nothing is ever written through a link or into an existing file. Write to `temporary`,
// close, or call `write_at`; then call `publish`, which replaces an older file or link. A file that is not published is
// removed. If the process is killed, the file remains until the front end, which knows whether a process still writes
// to it, removes it.
class OutputFile {
public:
  // base, final_name: in the same folder; base is the common prefix of all files of a run. Throws WriteError.
  OutputFile(const std::filesystem::path& base, std::filesystem::path final_name);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // For opening and writing, even if the file has been renamed on disk. Do not rename or delete this path.
  std::filesystem::path temporary() const;
  void write_at(std::uint64_t offset, std::string_view bytes); // throws WriteError
  const std::filesystem::path& final_name() const { return final_; }
  void rename_to(std::filesystem::path final_name) { final_ = std::move(final_name); } // before it is published
  void publish();                                                                      // throws WriteError

private:
  bool create(const std::filesystem::path& base);

  std::filesystem::path final_, part_; // part_: on the disk; empty once published
  int file_ = -1;                      // open until it is published
};

} // namespace reference_engine

#endif
