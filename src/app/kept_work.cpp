#include "app/kept_work.h"

#include "app/kept_results.h"
#include "dataset/same_content.h"
#include "dataset/vki_file.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vesk {

namespace {

namespace fs = std::filesystem;

// Whether the system has another name for the same file now. Not if others can change the file under that name, or if
// it could not be made private.
bool link_privately(const fs::path& file, const struct stat& status, const fs::path& name) {
  return status.st_uid == geteuid() && status.st_nlink == 1 &&
         linkat(AT_FDCWD, file.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

} // namespace

earlier_version::earlier_version(const kept_folder& folder, const fs::path& file) : folder_(folder) {
  constexpr std::uint64_t least_room = 3; // times the file: the copy, what the save writes, and the next save
  struct stat status {};
  if (stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0) return;
  std::error_code error;
  kept_folder::place place = folder.new_place(fs::absolute(file).lexically_normal().native(), false);
  try {
    if (const auto space = fs::space(folder.path(), error);
        !error && space.available / least_room < static_cast<std::uint64_t>(status.st_size))
      throw file_exception("write", place.file.native(), ENOSPC);
    if (!link_privately(file, status, place.file)) copy_file_in_pieces(file, place.file, [](int) { return true; });
  } catch (...) {
    place.remove();
    throw;
  }
  place_ = std::move(place);
}

earlier_version::~earlier_version() {
  if (place_) place_->remove();
}

void earlier_version::keep() {
  if (!place_) return;
  chmod(place_->file.c_str(), S_IRUSR | S_IWUSR);
  timespec now[2]; // when it was kept
  clock_gettime(CLOCK_REALTIME, &now[0]);
  now[1] = now[0];
  utimensat(AT_FDCWD, place_->file.c_str(), now, 0);
  place_.reset();
  folder_.tidy();
}

// This program's copy. The last owner, main thread or writer, removes it if it is not wanted any more.
class kept_work::unsaved_copy {
public:
  unsaved_copy(const kept_folder& folder, std::string of_original)
      : original(std::move(of_original)), folder_(folder) {}
  ~unsaved_copy() {
    if (place_ && !is_wanted) place_->remove();
  }
  unsaved_copy(const unsaved_copy&) = delete;
  unsaved_copy& operator=(const unsaved_copy&) = delete;

  // Throws file_exception; then an older copy is kept.
  void write(const data_set& data) {
    if (!place_) place_ = folder_.new_place(original, true);
    save_data_file(place_->file, data);
    chmod(place_->file.c_str(), S_IRUSR | S_IWUSR);
  }
  void give_up() { kept_folder::give_up(*place_); }
  const fs::path& file() const { return place_->file; }

  const std::string original;
  std::atomic<bool> is_wanted = true;

private:
  const kept_folder folder_;
  std::optional<kept_folder::place> place_; // none before it was first written
};

kept_work::~kept_work() {
  if (writing_.valid()) writing_.wait();
}

kept_work::outcome kept_work::bring_up_to_date(unsaved_copy& copy, const data_set& data,
                                               const std::optional<data_set>& saved,
                                               const std::optional<data_set>& written) {
  try {
    if (saved && same_input(data, *saved)) return {.is_unsaved = false, .failure = {}};
    if (!written || !same_content(data, *written)) copy.write(data);
    return {};
  } catch (const std::exception& error) {
    return {.is_unsaved = true, .failure = error.what()};
  }
}

void kept_work::prepare_copy(const std::string& original) {
  if (copy_ && copy_->original != original) drop();
  if (!copy_) copy_ = std::make_shared<unsaved_copy>(unsaved_, original);
}

std::string kept_work::renew(const data_set& data, const data_set* saved, const std::string& original) {
  if (writing_.valid()) {
    if (writing_.wait_for(std::chrono::seconds(0)) != std::future_status::ready) return {};
    std::string failure = take_outcome();
    return failure == reported_ ? std::string() : reported_ = std::move(failure);
  }
  if (clock::now() - checked_ < interval) return {};
  checked_ = clock::now();
  prepare_copy(original);
  pending_ = data;
  writing_ =
      std::async(std::launch::async, [copy = copy_, data, saved = saved ? std::optional(*saved) : std::nullopt,
                                      written = written_] { return bring_up_to_date(*copy, data, saved, written); });
  return {};
}

// The copy may have been dropped while it was written.
std::string kept_work::take_outcome() {
  const outcome ended = writing_.get();
  std::optional<data_set> pending = std::exchange(pending_, std::nullopt);
  if (!copy_) return {};
  if (ended.failure.empty() && ended.is_unsaved)
    written_ = std::move(pending);
  else if (!ended.is_unsaved || !written_)
    drop();
  return ended.failure;
}

void kept_work::drop() {
  if (copy_) copy_->is_wanted = false;
  copy_.reset();
  written_.reset();
}

fs::path kept_work::keep(const data_set& data, const std::string& original, bool for_next_start) {
  if (writing_.valid()) take_outcome();
  prepare_copy(original);
  try {
    if (!written_ || !same_content(*written_, data)) copy_->write(data);
  } catch (...) {
    if (written_)
      hand_over(for_next_start); // better than nothing
    else
      drop();
    throw;
  }
  fs::path file = copy_->file();
  hand_over(for_next_start);
  return file;
}

void kept_work::hand_over(bool for_next_start) {
  const auto copy = std::exchange(copy_, nullptr);
  written_.reset();
  if (for_next_start) return;
  copy->give_up();
  unsaved_.tidy();
}

std::vector<kept_file> kept_work::take_over() {
  std::vector<kept_file> left = unsaved_.take_over();
  unsaved_.tidy();
  return left;
}

std::vector<kept_file> kept_work::list() const {
  std::vector<kept_file> files = unsaved_.list();
  for (kept_file& file : earlier_.list()) files.push_back(std::move(file));
  return files;
}

} // namespace vesk
