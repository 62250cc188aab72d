// The source of the program's catalogue: the tables in its database folder.
#pragma once

#include "dataset/catalogue.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace vesk {

class catalogue_source {
public:
  explicit catalogue_source(std::filesystem::path directory) : directory_(std::move(directory)) {}

  // `database/` next to the executable, otherwise <prefix>/share/vesk/database/.
  static std::filesystem::path default_directory();

  const std::filesystem::path& directory() const { return directory_; }
  void set_directory(std::filesystem::path directory) { directory_ = std::move(directory); }

  // The catalogue from `catalogue.sqlite` if the folder has one, otherwise from its Paradox tables. Read at the first
  // call, and again if the folder or any of these files has changed since. Throws catalogue_exception.
  std::shared_ptr<const model_catalogue> get();

private:
  // The state of a file when it was read.
  struct file_state {
    std::filesystem::path file;
    std::filesystem::file_time_type written;
    std::uintmax_t size = 0;
    friend bool operator==(const file_state&, const file_state&) = default;
  };
  static std::vector<file_state> state_of(const std::vector<std::filesystem::path>& files);

  std::filesystem::path directory_;
  std::vector<file_state> read_state_;
  std::shared_ptr<const model_catalogue> catalogue_;
};

} // namespace vesk
