#include "app/previous_results.h"

#include "platform/file_identity.h"

#include <cstdio>
#include <random>
#include <unistd.h>

namespace vesk {

namespace {

namespace fs = std::filesystem;

fs::path with_ending(const fs::path& base, const std::string& ending) {
  return base.native() + ending;
}

// The name of an unfinished file: if the program dies, the next run removes it; see platform/output_lock.h.
std::string unfinished_ending() {
  std::random_device random;
  char number[17];
  std::snprintf(number, sizeof number, "%08x%08x", random(), random());
  return ".part-vesk-" + std::to_string(getpid()) + "-" + number;
}

bool give_second_name(const fs::path& present, const fs::path& second) {
  std::error_code error;
  if (!fs::is_regular_file(present, error)) return false;
  fs::create_hard_link(present, second, error);
  if (!error) return true;
  const auto room = fs::space(present.parent_path(), error);
  if (error || room.available < 2 * fs::file_size(present, error) || error) return false; // the run needs room, too
  return fs::copy_file(present, second, error);
}

} // namespace

fs::path previous_results::file_of(const fs::path& base) {
  return with_ending(base, ".previous.nc");
}

previous_results::previous_results(const fs::path& base) {
  for (const char* ending : {".nc", ".run.json"}) {
    kept_file it{with_ending(base, ending), with_ending(base, unfinished_ending()),
                 with_ending(base, std::string(".previous") + ending), false};
    it.is_there = give_second_name(it.present, it.second);
    files_.push_back(std::move(it));
  }
}

previous_results::~previous_results() {
  std::error_code ignored;
  for (const kept_file& it : files_)
    if (it.is_there) fs::remove(it.second, ignored);
}

void previous_results::keep() {
  const auto present = identity_of(files_.front().present), before = identity_of(files_.front().second);
  if (!present || !before || (present->device == before->device && present->inode == before->inode)) return;
  for (kept_file& it : files_) {
    std::error_code error;
    if (it.is_there)
      fs::rename(it.second, it.previous, error);
    else
      fs::remove(it.previous, error); // of results before those
    if (!error) it.is_there = false;
  }
}

} // namespace vesk
