#include "platform/safe_file.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vesk {

namespace {

constexpr int most_links = 40;

// Where a chain of symbolic links ends, whether or not there is a file.
std::filesystem::path end_of_links(std::filesystem::path path) {
  std::error_code error;
  for (int links = 0; std::filesystem::is_symlink(std::filesystem::symlink_status(path, error)); ++links) {
    if (links == most_links) throw file_open_exception(file_failure("write", path.native(), ELOOP));
    const std::filesystem::path next = std::filesystem::read_symlink(path, error);
    if (error) throw file_open_exception(file_failure("write", path.native(), error.value()));
    path = next.is_absolute() ? next : path.parent_path() / next;
  }
  return path;
}

std::optional<struct stat> status_of(const std::filesystem::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) return status;
  if (errno == ENOENT) return std::nullopt;
  throw file_open_exception(file_failure("write", path.native(), errno));
}

std::string unpredictable_name() {
  std::uint64_t number = 0;
  if (getrandom(&number, sizeof number, 0) != sizeof number) number = static_cast<std::uint64_t>(getpid());
  char text[32];
  std::snprintf(text, sizeof text, ".vesk-%016llx", static_cast<unsigned long long>(number));
  return text;
}

// Owner first: changing it may take bits from the mode. Without the right to give the file away, its group alone.
void take_over_owner_and_mode(int file, const struct stat& old) {
  if (fchown(file, old.st_uid, old.st_gid) != 0 && fchown(file, static_cast<uid_t>(-1), old.st_gid) != 0) {
    // Not permitted: the file stays the saver's own.
  }
  fchmod(file, old.st_mode & 07777);
}

} // namespace

safe_file::safe_file(const std::filesystem::path& target) : name_(target.native()) {
  const std::filesystem::path end = end_of_links(target);
  const auto old = status_of(end);
  if (old && S_ISDIR(old->st_mode)) throw file_open_exception(file_failure("write", name_, EISDIR));
  if (old && faccessat(AT_FDCWD, end.c_str(), W_OK, AT_EACCESS) != 0)
    throw file_open_exception(file_failure("write", name_, errno));
  if (old && !S_ISREG(old->st_mode)) {
    file_ = file_descriptor(open(end.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file_.is_open()) throw file_open_exception(file_failure("write", name_, errno));
    return;
  }
  // Beside an old file it is born with the narrowest mode, so that a private file is never open to others.
  create_beside(end, old ? S_IRUSR | S_IWUSR : 0666);
  if (old) take_over_owner_and_mode(file_.get(), *old);
}

void safe_file::create_beside(const std::filesystem::path& target, unsigned mode) {
  target_name_ = target.filename().native();
  const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
  folder_ = file_descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder_.is_open() || target_name_.empty())
    throw file_open_exception(file_failure("write", name_, folder_.is_open() ? EISDIR : errno));
  do {
    temporary_ = unpredictable_name();
    file_ = file_descriptor(openat(folder_.get(), temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
  } while (!file_.is_open() && errno == EEXIST);
  if (file_.is_open()) return;
  const int cause = errno;
  temporary_.clear();
  throw file_open_exception(file_failure("write", name_, cause));
}

safe_file::~safe_file() {
  remove_temporary();
}

void safe_file::remove_temporary() noexcept {
  if (!temporary_.empty()) unlinkat(folder_.get(), temporary_.c_str(), 0);
  temporary_.clear();
}

void safe_file::commit() {
  if (temporary_.empty()) return; // a device or pipe: written, not replaced
  if (fsync(file_.get()) != 0 || close(file_.release()) != 0 ||
      renameat(folder_.get(), temporary_.c_str(), folder_.get(), target_name_.c_str()) != 0) {
    const int cause = errno;
    remove_temporary();
    throw file_exception(file_failure("write", name_, cause));
  }
  temporary_.clear();
  fsync(folder_.get()); // without it a power cut may bring the old file back: whole, so no failure of saving
}

} // namespace vesk
