// What a run in a child process reports to its parent, so that a crash leaves a record as well.
#pragma once

#include "platform/file_io.h"

#include <filesystem>
#include <string>

namespace vesk {

// Memory that both processes see. The child writes, the parent reads once the child has ended.
class run_report {
public:
  run_report(); // throws file_exception

  // The record so far, or the whole one, and the file that it belongs in. Throws file_exception; then the one before
  // stays.
  void put(const std::filesystem::path& record_file, const std::string& json, bool whole);

  struct content {
    bool whole = false;
    std::filesystem::path record_file;
    std::string json;
  };
  content get() const; // the last one

private:
  file_descriptor memory_;
};

} // namespace vesk
