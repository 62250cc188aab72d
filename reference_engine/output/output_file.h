// A file that appears under its name only when it is whole.
#ifndef REFERENCE_ENGINE_OUTPUT_OUTPUT_FILE_H
#define REFERENCE_ENGINE_OUTPUT_OUTPUT_FILE_H

#include <filesystem>

namespace reference_engine {

// Until it is whole the file has a name that nobody can know before: that of `base`, then ".part-HOST-PROCESS-" and 16
// random hexadecimal digits. It is created there, never opened, so that no link and no other file is written to. Write
// to `temporary`, close, then `publish`, which replaces an older file or link. A file that is not published is removed;
// when the process is killed, it stays for the front end to remove, which knows whether another process still writes
// it.
class OutputFile {
public:
  // base, final_name: in one folder; base is what the names of all files of a run begin with. Throws WriteError.
  OutputFile(const std::filesystem::path& base, std::filesystem::path final_name);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // For opening and writing, whatever becomes of the name on the disk meanwhile; it is no name to rename or delete.
  std::filesystem::path temporary() const;
  const std::filesystem::path& final_name() const { return final_; }
  void publish(); // throws WriteError

private:
  bool create(const std::filesystem::path& base);

  std::filesystem::path final_, part_; // part_: on the disk; empty when published
  int file_ = -1;                      // open for as long as this object is there
};

} // namespace reference_engine

#endif
