#include "platform/safe_file.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vesk {

namespace {

constexpr int most_links = 40;

// The end of a chain of symbolic links, whether or not it exists.
std::filesystem::path end_of_links(std::filesystem::path path) {
  std::error_code error;
  for (int links = 0;; ++links) {
    const auto status = std::filesystem::symlink_status(path, error);
    // A path that cannot be examined may be a link, and a link must not be replaced.
    if (!std::filesystem::status_known(status)) throw file_open_exception("write", path.native(), error.value());
    if (!std::filesystem::is_symlink(status)) return path;
    if (links == most_links) throw file_open_exception("write", path.native(), ELOOP);
    const std::filesystem::path next = std::filesystem::read_symlink(path, error);
    if (error) throw file_open_exception("write", path.native(), error.value());
    path = next.is_absolute() ? next : path.parent_path() / next;
  }
}

std::optional<struct stat> status_of(const std::filesystem::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) return status;
  if (errno == ENOENT) return std::nullopt;
  throw file_open_exception("write", path.native(), errno);
}

// Hidden names: the mark and 16 hexadecimal digits.
constexpr std::string_view mark = ".vesk-";
constexpr std::size_t digits = 16;

std::string unpredictable_name() {
  std::uint64_t number = 0;
  if (getrandom(&number, sizeof number, 0) != sizeof number)
    number = static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
  char text[digits + 1];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(number));
  return std::string(mark) + text;
}

bool is_hidden_name(std::string_view name) {
  return name.size() == mark.size() + digits && name.starts_with(mark) &&
         name.find_first_not_of("0123456789abcdef", mark.size()) == name.npos;
}

// A writer holds this lock for as long as its file may have a hidden name. The lock ends with the writer, on whatever
// machine, so a file that can be locked is a leftover. Does not wait.
bool lock_against_tidying(int file) {
  return flock(file, LOCK_EX | LOCK_NB) == 0;
}

// Removes leftovers of dead writers from a folder. Files that cannot be removed remain until the next time.
void remove_leftovers(int folder, const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::directory_iterator entry(path, error), end;
  for (; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().native();
    if (!is_hidden_name(name)) continue;
    const file_descriptor file(openat(folder, name.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (file.is_open() && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
        lock_against_tidying(file.get()))
      unlinkat(folder, name.c_str(), 0);
  }
}

// Locks a file just created under a hidden name. False if another process has already removed it as a leftover.
bool lock_new(int file) {
  if (!lock_against_tidying(file)) return errno != EWOULDBLOCK; // without locks no leftovers are removed
  struct stat status {};
  return fstat(file, &status) != 0 || status.st_nlink > 0;
}

// Owner first, since changing it may clear bits of the mode; if that is not permitted, only the group. The set-user-id,
// set-group-id and sticky bits are dropped: they were granted to the old content.
void take_over_owner_and_mode(int file, const struct stat& old) {
  if (fchown(file, old.st_uid, old.st_gid) != 0 && fchown(file, static_cast<uid_t>(-1), old.st_gid) != 0) {
    // Not permitted: the file keeps the owner who saves it.
  }
  fchmod(file, old.st_mode & 0777);
}

// A folder without read permission can still be written to; it just cannot be flushed.
file_descriptor open_folder(const std::filesystem::path& folder) {
  file_descriptor result(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (result.is_open() || errno != EACCES) return result;
  return file_descriptor(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// The system's path of an open file.
std::string link_of(int file) {
  return "/proc/self/fd/" + std::to_string(file);
}

// A file in `folder` without a name, which disappears with its last descriptor, however its writer ends. Not open if
// the file system does not support that, or if the file could not be named later.
file_descriptor open_unnamed(int folder, unsigned mode) {
  file_descriptor file(openat(folder, ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, mode));
  if (file.is_open() && access(link_of(file.get()).c_str(), F_OK) != 0) return {};
  if (file.is_open()) lock_against_tidying(file.get());
  return file;
}

} // namespace

safe_file::safe_file(const std::filesystem::path& target) : name_(target.native()) {
  const auto old = status_of(target);
  if (old && S_ISDIR(old->st_mode)) throw file_open_exception("write", name_, EISDIR);
  if (old && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0)
    throw file_open_exception("write", name_, errno);
  if (old && !S_ISREG(old->st_mode)) {
    // By the given name: the target of a link to an open pipe is not a path.
    file_ = file_descriptor(open(target.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file_.is_open()) throw file_open_exception("write", name_, errno);
    return;
  }
  // If there is an old file, created with the narrowest mode, so that a private file is never readable to others.
  create_beside(end_of_links(target), old ? S_IRUSR | S_IWUSR : 0666);
  if (old) take_over_owner_and_mode(file_.get(), *old);
}

void safe_file::create_beside(const std::filesystem::path& target, unsigned mode) {
  target_name_ = target.filename().native();
  const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
  folder_ = open_folder(folder);
  if (!folder_.is_open() || target_name_.empty())
    throw file_open_exception("write", name_, folder_.is_open() ? EISDIR : errno);
  remove_leftovers(folder_.get(), folder);
  file_ = open_unnamed(folder_.get(), mode);
  if (file_.is_open()) return;
  const bool created = under_new_name([&](const char* name) {
    file_ = file_descriptor(openat(folder_.get(), name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file_.is_open() || lock_new(file_.get())) return file_.is_open();
    errno = EEXIST;
    return false;
  });
  if (!created) throw file_open_exception("write", name_, errno);
}

// Calls `create` with new names until one is free; if nothing was created, errno has the cause.
bool safe_file::under_new_name(const auto& create) {
  do {
    std::string name = unpredictable_name();
    if (!create(name.c_str())) continue;
    temporary_ = std::move(name);
    return true;
  } while (errno == EEXIST);
  return false;
}

// Names the file just before the rename: an existing file can be replaced by a rename but not by a link.
bool safe_file::give_name() {
  if (!temporary_.empty()) return true;
  return under_new_name([&](const char* name) {
    return linkat(AT_FDCWD, link_of(file_.get()).c_str(), folder_.get(), name, AT_SYMLINK_FOLLOW) == 0;
  });
}

safe_file::~safe_file() {
  remove_temporary();
}

void safe_file::remove_temporary() noexcept {
  if (!temporary_.empty()) unlinkat(folder_.get(), temporary_.c_str(), 0);
  temporary_.clear();
}

void safe_file::commit() {
  if (!folder_.is_open()) return; // a device or pipe: written, not replaced
  // Keeps the lock after the close. Closing comes before the rename because it may fail too.
  const file_descriptor locked(fcntl(file_.get(), F_DUPFD_CLOEXEC, 0));
  if (fsync(file_.get()) != 0 || !give_name() || close(file_.release()) != 0 ||
      renameat(folder_.get(), temporary_.c_str(), folder_.get(), target_name_.c_str()) != 0) {
    const int cause = errno;
    remove_temporary();
    throw file_exception("write", name_, cause);
  }
  temporary_.clear();
  fsync(folder_.get()); // else a power cut may bring back the old file, complete, so a failure here is not reported
}

} // namespace vesk
