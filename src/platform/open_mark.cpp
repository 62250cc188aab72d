#include "platform/open_mark.h"

#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vesk {

namespace {

namespace fs = std::filesystem;

// The same for every path to the file. FNV-1a: two files that share a mark would only give a needless message.
fs::path mark_of(const fs::path& file, const fs::path& folder) {
  std::error_code error;
  fs::path whole = fs::weakly_canonical(file, error);
  if (error) whole = fs::absolute(file, error);
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char c : whole.native()) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
  return folder / digits;
}

bool has_its_name(int file, const fs::path& name) {
  struct stat named {
  }, opened{};
  return stat(name.c_str(), &named) == 0 && fstat(file, &opened) == 0 && named.st_dev == opened.st_dev &&
         named.st_ino == opened.st_ino;
}

} // namespace

open_mark::open_mark(const fs::path& file, const fs::path& folder) {
  if (folder.empty()) return;
  std::error_code ignored;
  fs::create_directories(folder, ignored);
  name_ = mark_of(file, folder);
  for (int attempt = 0; attempt < 10; ++attempt) { // another program may be removing the mark
    lock_ = file_descriptor(open(name_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!lock_.is_open()) return;
    was_alone_ = flock(lock_.get(), LOCK_EX | LOCK_NB) == 0;
    if (flock(lock_.get(), LOCK_SH | LOCK_NB) == 0 && has_its_name(lock_.get(), name_)) return;
    was_alone_ = true;
  }
  lock_ = file_descriptor();
}

// The last one removes the mark.
void open_mark::release() noexcept {
  if (lock_.is_open() && flock(lock_.get(), LOCK_EX | LOCK_NB) == 0) unlink(name_.c_str());
  lock_ = file_descriptor();
}

open_mark& open_mark::operator=(open_mark&& other) noexcept {
  release();
  name_ = std::move(other.name_);
  lock_ = std::move(other.lock_);
  was_alone_ = other.was_alone_;
  return *this;
}

open_mark::~open_mark() {
  release();
}

} // namespace vesk
