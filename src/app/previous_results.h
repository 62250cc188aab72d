// The results of the run before, kept as BASE.previous.nc with their record, so that a run can be compared with them.
#pragma once

#include <filesystem>
#include <vector>

namespace vesk {

// From before a run to its end. Main thread. Nothing here fails: without room the older results are not kept.
class previous_results {
public:
  // Gives BASE.nc and its record second names: hard links, which cost nothing; copies where links are refused.
  explicit previous_results(const std::filesystem::path& base);
  // Without `keep` the second names go.
  ~previous_results();
  previous_results(const previous_results&) = delete;
  previous_results& operator=(const previous_results&) = delete;

  // After a good run: the second names become those of the previous results. Not where the run has not written BASE.nc
  // anew, and not where it has written into the old one, whose values are gone then.
  void keep();

  static std::filesystem::path file_of(const std::filesystem::path& base); // BASE.previous.nc

private:
  struct kept_file {
    std::filesystem::path present, second, previous;
    bool is_there;
  };
  std::vector<kept_file> files_; // the results first
};

} // namespace vesk
