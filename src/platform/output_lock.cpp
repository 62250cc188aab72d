#include "platform/output_lock.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace vesk {

namespace {

namespace fs = std::filesystem;

constexpr int most_attempts = 100, looks_at_a_holder = 4;
constexpr std::chrono::milliseconds between_attempts(5);
constexpr int careful = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC; // others may have put anything there

// Like flock, without waiting. On failure errno has the cause: EWOULDBLOCK if the lock is held elsewhere.
bool lock(int file) {
  if (flock(file, LOCK_EX | LOCK_NB) == 0) return true;
  if (errno == EWOULDBLOCK) return false;
  struct flock whole_file {};
  whole_file.l_type = F_WRLCK;
  whole_file.l_whence = SEEK_SET;
  if (fcntl(file, F_OFD_SETLK, &whole_file) == 0) return true;
  if (errno == EACCES) errno = EWOULDBLOCK;
  return false;
}

// Whether a text is "HOST-PROCESS-RANDOM", the end of the name of an unfinished result. No base ends like that by
// chance: the host contains neither a dot nor a hyphen.
bool names_a_writer(std::string_view text) {
  const auto take = [&](std::string_view allowed) {
    const std::size_t size = std::min(text.find_first_not_of(allowed), text.size());
    text.remove_prefix(size);
    return size;
  };
  constexpr std::string_view digits = "0123456789", hexadecimal = "0123456789abcdef",
                             letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  return take(letters) > 0 && take("-") == 1 && take(digits) > 0 && take("-") == 1 && take(hexadecimal) == 16 &&
         text.empty();
}

void remove_leftovers(const fs::path& base) {
  const std::string head = base.filename().native() + ".part-";
  std::error_code error;
  fs::directory_iterator entry(base.parent_path(), error), end;
  for (; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().native();
    std::error_code ignored;
    if (name.starts_with(head) && names_a_writer(std::string_view(name).substr(head.size())) &&
        fs::is_regular_file(entry->symlink_status(ignored)))
      fs::remove(entry->path(), ignored);
  }
}

} // namespace

output_lock::output_lock(const fs::path& base) : base_(fs::absolute(base)), process_(getpid()) {
  name_ = base_.parent_path() / ("." + base_.filename().native() + ".run");
  // A held lock is checked several times: its file may just have been created and be empty, or be about to be deleted.
  for (int attempt = 0, held = 0; attempt < most_attempts; ++attempt) {
    if (attempt > 0) std::this_thread::sleep_for(between_attempts);
    const outcome result = try_to_take();
    if (result == outcome::taken) {
      remove_leftovers(base_);
      return;
    }
    if (result == outcome::impossible) {
      warning_ = "The results of " + base_.native() + " cannot be locked (" + std::strerror(errno) +
                 "). Make sure that no other run writes to them.";
      file_ = file_descriptor();
      return;
    }
    held = result == outcome::held ? held + 1 : 0;
    if (held >= looks_at_a_holder && !holder().empty()) break;
  }
  const std::string who = holder();
  throw output_lock_refused("The results of " + base_.native() + " are being written by another run" +
                            (who.empty() ? "" : ": " + who) +
                            ". Wait until it has ended, or run a copy of the data file under another name.");
}

output_lock::~output_lock() {
  if (file_.is_open() && process_ == getpid() && has_its_name()) unlink(name_.c_str());
}

// A leftover file is deleted, not reused: it may be a link to an important file, and it names its last holder. errno
// has the cause if the lock is impossible.
output_lock::outcome output_lock::try_to_take() {
  const bool created = open_file();
  if (!file_.is_open()) return errno == EEXIST ? outcome::again : outcome::impossible;
  if (!lock(file_.get())) {
    const int cause = errno;
    if (cause == EWOULDBLOCK) return outcome::held;
    if (created) unlink(name_.c_str());
    errno = cause;
    return outcome::impossible;
  }
  if (!has_its_name()) return outcome::again;
  if (created) {
    say_who_holds();
    return outcome::taken;
  }
  return unlink(name_.c_str()) == 0 ? outcome::again : outcome::taken; // not ours to delete, but locked
}

// True if the file was created. On failure it is not open, and errno has the cause.
bool output_lock::open_file() {
  file_ = file_descriptor(open(name_.c_str(), O_RDWR | careful));
  if (!file_.is_open() && errno == EACCES) file_ = file_descriptor(open(name_.c_str(), O_RDONLY | careful));
  if (!file_.is_open() && errno == ENOENT) {
    file_ = file_descriptor(open(name_.c_str(), O_RDWR | O_CREAT | O_EXCL | careful, 0666));
    return file_.is_open();
  }
  struct stat status {};
  const bool is_other = file_.is_open() ? fstat(file_.get(), &status) == 0 && !S_ISREG(status.st_mode)
                                        : errno == ELOOP || errno == EISDIR || errno == ENXIO;
  if (is_other)
    throw output_lock_refused(name_.native() + " is not a regular file, so the results of " + base_.native() +
                              " cannot be locked. Delete it.");
  return false;
}

bool output_lock::has_its_name() const {
  struct stat named {
  }, opened{};
  return fstatat(AT_FDCWD, name_.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 && fstat(file_.get(), &opened) == 0 &&
         named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

// Readable to everyone who can access the folder, so that they can lock it too. If the text cannot be written, only
// messages lack it.
void output_lock::say_who_holds() {
  char host[256] = "", started[64] = "";
  gethostname(host, sizeof host - 1);
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  std::strftime(started, sizeof started, "%Y-%m-%d %H:%M:%S UTC", gmtime_r(&now, &utc));
  const std::string text = "process " + std::to_string(process_) + " on " + host + ", started " + started + "\n";
  fchmod(file_.get(), 0644);
  [[maybe_unused]] const ssize_t written = write(file_.get(), text.data(), text.size());
}

std::string output_lock::holder() const {
  char bytes[400];
  const ssize_t size = file_.is_open() ? pread(file_.get(), bytes, sizeof bytes, 0) : 0;
  std::string text(bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  text.resize(std::min(text.find('\n'), text.size()));
  std::ranges::replace_if(
      text, [](char c) { return c < ' ' || c > '~'; }, '?');
  return text;
}

} // namespace vesk
