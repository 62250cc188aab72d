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

// Where a chain of symbolic links ends, whether or not there is a file.
std::filesystem::path end_of_links(std::filesystem::path path) {
  std::error_code error;
  for (int links = 0;; ++links) {
    const auto status = std::filesystem::symlink_status(path, error);
    // What cannot be looked at may be a link, which is not to be replaced.
    if (!std::filesystem::status_known(status))
      throw file_open_exception(file_failure("write", path.native(), error.value()));
    if (!std::filesystem::is_symlink(status)) return path;
    if (links == most_links) throw file_open_exception(file_failure("write", path.native(), ELOOP));
    const std::filesystem::path next = std::filesystem::read_symlink(path, error);
    if (error) throw file_open_exception(file_failure("write", path.native(), error.value()));
    path = next.is_absolute() ? next : path.parent_path() / next;
  }
}

std::optional<struct stat> status_of(const std::filesystem::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) return status;
  if (errno == ENOENT) return std::nullopt;
  throw file_open_exception(file_failure("write", path.native(), errno));
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

// A writer holds this lock on its file for as long as the file may have a hidden name. It ends with the writer,
// wherever that runs, so that a file which can be locked by another is left over. Not waited for.
bool lock_against_tidying(int file) {
  return flock(file, LOCK_EX | LOCK_NB) == 0;
}

// Removes what writers that are gone have left in a folder. What cannot be removed stays for the next time.
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

// Locks a file that has just been made under a hidden name. False when it was taken for a leftover before.
bool lock_new(int file) {
  if (!lock_against_tidying(file)) return errno != EWOULDBLOCK; // without locks nothing is tidied up
  struct stat status {};
  return fstat(file, &status) != 0 || status.st_nlink > 0;
}

// Owner first: changing it may take bits from the mode. Without the right to give the file away, its group alone. The
// set-user-id, set-group-id and sticky bits are dropped: the new content was not what they were given to.
void take_over_owner_and_mode(int file, const struct stat& old) {
  if (fchown(file, old.st_uid, old.st_gid) != 0 && fchown(file, static_cast<uid_t>(-1), old.st_gid) != 0) {
    // Not permitted: the file stays the saver's own.
  }
  fchmod(file, old.st_mode & 0777);
}

// A folder that may not be read can be written to all the same; it only cannot be flushed.
file_descriptor open_folder(const std::filesystem::path& folder) {
  file_descriptor result(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (result.is_open() || errno != EACCES) return result;
  return file_descriptor(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// The system's name for an open file.
std::string link_of(int file) {
  return "/proc/self/fd/" + std::to_string(file);
}

// A file in `folder` that has no name and goes with its last descriptor, however its writer ends. Not open where the
// file system has none, or where it could not be named later.
file_descriptor open_unnamed(int folder, unsigned mode) {
  file_descriptor file(openat(folder, ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, mode));
  if (file.is_open() && access(link_of(file.get()).c_str(), F_OK) != 0) return {};
  if (file.is_open()) lock_against_tidying(file.get());
  return file;
}

} // namespace

safe_file::safe_file(const std::filesystem::path& target) : name_(target.native()) {
  const auto old = status_of(target);
  if (old && S_ISDIR(old->st_mode)) throw file_open_exception(file_failure("write", name_, EISDIR));
  if (old && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0)
    throw file_open_exception(file_failure("write", name_, errno));
  if (old && !S_ISREG(old->st_mode)) {
    // By the name that was given: the content of a link to an open pipe is not a path.
    file_ = file_descriptor(open(target.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file_.is_open()) throw file_open_exception(file_failure("write", name_, errno));
    return;
  }
  // Beside an old file it is born with the narrowest mode, so that a private file is never open to others.
  create_beside(end_of_links(target), old ? S_IRUSR | S_IWUSR : 0666);
  if (old) take_over_owner_and_mode(file_.get(), *old);
}

void safe_file::create_beside(const std::filesystem::path& target, unsigned mode) {
  target_name_ = target.filename().native();
  const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
  folder_ = open_folder(folder);
  if (!folder_.is_open() || target_name_.empty())
    throw file_open_exception(file_failure("write", name_, folder_.is_open() ? EISDIR : errno));
  remove_leftovers(folder_.get(), folder);
  file_ = open_unnamed(folder_.get(), mode);
  if (file_.is_open()) return;
  const bool created = under_new_name([&](const char* name) {
    file_ = file_descriptor(openat(folder_.get(), name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file_.is_open() || lock_new(file_.get())) return file_.is_open();
    errno = EEXIST;
    return false;
  });
  if (!created) throw file_open_exception(file_failure("write", name_, errno));
}

// Calls `create` with one name after the other until it is not taken yet; errno has the cause if none was created.
bool safe_file::under_new_name(const auto& create) {
  do {
    std::string name = unpredictable_name();
    if (!create(name.c_str())) continue;
    temporary_ = std::move(name);
    return true;
  } while (errno == EEXIST);
  return false;
}

// Gives the file a name for the moment before it takes the target's: a link cannot replace a file, a renaming can.
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
  // Keeps the lock beyond the closing, which comes before the renaming because it may fail, too.
  const file_descriptor locked(fcntl(file_.get(), F_DUPFD_CLOEXEC, 0));
  if (fsync(file_.get()) != 0 || !give_name() || close(file_.release()) != 0 ||
      renameat(folder_.get(), temporary_.c_str(), folder_.get(), target_name_.c_str()) != 0) {
    const int cause = errno;
    remove_temporary();
    throw file_exception(file_failure("write", name_, cause));
  }
  temporary_.clear();
  fsync(folder_.get()); // without it a power cut may bring the old file back: whole, so no failure of saving
}

} // namespace vesk
