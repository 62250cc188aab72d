#include "app/kept_folder.h"

#include "app/file_names.h"
#include "platform/file_identity.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <fcntl.h>
#include <map>
#include <sys/file.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

namespace vesk {

namespace {

namespace fs = std::filesystem;
using time_point = std::chrono::system_clock::time_point;

constexpr const char* ending = ".vki";
constexpr const char* note_ending = ".path";
constexpr const char* owned_ending = ".session";

std::string local_time(time_point time, const char* format) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  localtime_r(&seconds, &parts);
  char text[32];
  return {text, std::strftime(text, sizeof text, format, &parts)};
}

// The start of the copy's name: at most as long as leaves room for the rest in a file name.
std::string stem_of(const std::string& original) {
  constexpr std::size_t most = 200; // bytes
  std::string stem = original.empty() ? "unnamed" : split_file_name(original).base;
  std::size_t size = std::min(stem.size(), most);
  while (size > 0 && size < stem.size() && (static_cast<unsigned char>(stem[size]) & 0xc0) == 0x80) --size;
  stem.resize(size); // a whole number of UTF-8 characters
  return stem;
}

bool is_there(const fs::path& file) {
  struct stat status {};
  return lstat(file.c_str(), &status) == 0;
}

file_descriptor create(const fs::path& file) {
  return file_descriptor(open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
}

// False if another program has removed the new note as that of an ended one.
bool lock_new(int note) {
  struct stat status {};
  return flock(note, LOCK_EX | LOCK_NB) == 0 && fstat(note, &status) == 0 && status.st_nlink > 0;
}

void rename_or_throw(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::rename(from, to, error);
  if (error) throw file_exception("rename", from.native(), error.value());
}

std::string content_of(const fs::path& note) {
  const file_descriptor file(open(note.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  std::string text(PATH_MAX, '\0');
  const ssize_t size = file.is_open() ? read(file.get(), text.data(), text.size()) : 0;
  text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return text;
}

fs::path with(const fs::path& file, const char* text) {
  return file.native() + text;
}

} // namespace

std::string in_words(const kept_file& file) {
  const bool is_unsaved = file.kind == kept_kind::unsaved_work;
  return (is_unsaved ? "unsaved changes to " : "an earlier version of ") +
         (file.original.empty() ? "the unnamed data set" : leaf_of(file.original));
}

std::string time_in_words(time_point time) {
  return local_time(time, "%Y-%m-%d %H:%M:%S");
}

void kept_folder::place::remove() const noexcept {
  unlink(file.c_str());
  unlink(note.c_str());
}

void kept_folder::prepare() const {
  std::error_code error;
  fs::create_directories(folder_.parent_path(), error);
  if (mkdir(folder_.c_str(), S_IRWXU) != 0 && errno != EEXIST)
    throw file_open_exception("create", folder_.native(), errno);
  const file_descriptor folder(open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (!folder.is_open() || fstat(folder.get(), &status) != 0)
    throw file_open_exception("open", folder_.native(), errno);
  if (status.st_uid != geteuid()) throw file_open_exception("use", folder_.native(), EPERM);
  if ((status.st_mode & 0777) != S_IRWXU) fchmod(folder.get(), S_IRWXU);
  if (access(folder_.c_str(), W_OK) != 0) throw file_open_exception("write to", folder_.native(), errno);
}

kept_folder::place kept_folder::new_place(const std::string& original, bool owned) const {
  constexpr int most_tries = 1000;
  prepare();
  const std::string name = stem_of(original) + local_time(std::chrono::system_clock::now(), "-%Y%m%d-%H%M%S");
  for (int number = 1;; ++number) {
    place found;
    found.file = folder_ / (name + (number > 1 ? "-" + std::to_string(number) : std::string()) + ending);
    found.note = with(found.file, owned ? owned_ending : note_ending);
    file_descriptor note = create(found.note);
    if (!note.is_open() && (errno != EEXIST || number == most_tries))
      throw file_open_exception("write", found.note.native(), errno);
    if (!note.is_open() || (owned && !lock_new(note.get()))) continue;
    if (is_there(found.file)) {
      unlink(found.note.c_str());
      continue;
    }
    try {
      write_all(note.get(), original, {}, found.note.native());
    } catch (...) {
      found.remove();
      throw;
    }
    if (owned) found.lock = std::move(note);
    return found;
  }
}

void kept_folder::give_up(place& owned) {
  const fs::path note = with(owned.file, note_ending);
  rename_or_throw(owned.note, note);
  owned.note = note;
  owned.lock = file_descriptor();
}

kept_file kept_folder::examine(const fs::path& file, const fs::path& note) const {
  std::error_code ignored;
  const auto found = fs::is_symlink(file, ignored) ? std::nullopt : identity_of(file);
  if (!found || found->size == 0) return {};
  const auto since_1970 =
      std::chrono::seconds(found->changed_seconds) + std::chrono::nanoseconds(found->changed_nanoseconds);
  return {file, kind_, content_of(note), time_point(std::chrono::duration_cast<time_point::duration>(since_1970)),
          found->size};
}

std::vector<kept_file> kept_folder::list() const {
  std::vector<kept_file> files;
  std::error_code error;
  for (fs::directory_iterator entry(folder_, error), end; !error && entry != end; entry.increment(error)) {
    const fs::path& file = entry->path();
    if (file.extension() != ending || is_there(with(file, owned_ending))) continue;
    if (kept_file found = examine(file, with(file, note_ending)); found.bytes > 0) files.push_back(std::move(found));
  }
  std::ranges::sort(files, [](const kept_file& a, const kept_file& b) {
    return std::tie(a.time, a.file) > std::tie(b.time, b.file);
  });
  return files;
}

std::vector<kept_file> kept_folder::take_over() const {
  std::vector<fs::path> notes;
  std::error_code error;
  for (fs::directory_iterator entry(folder_, error), end; !error && entry != end; entry.increment(error))
    if (entry->path().extension() == owned_ending) notes.push_back(entry->path());
  std::vector<kept_file> files;
  for (const fs::path& note : notes) {
    place left{fs::path(note).replace_extension(), note,
               file_descriptor(open(note.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC))};
    if (!left.lock.is_open() || flock(left.lock.get(), LOCK_EX | LOCK_NB) != 0) continue;
    kept_file found = examine(left.file, note);
    if (found.bytes == 0) {
      left.remove(); // it ended before anything was written
    } else {
      give_up(left);
      files.push_back(std::move(found));
    }
  }
  return files;
}

void kept_folder::tidy() const {
  const std::vector<kept_file> files = list();
  std::map<std::string, std::size_t> count; // for each data file, so far
  std::vector<const kept_file*> older;
  std::uint64_t bytes = 0;
  const auto key = [this](const kept_file& file) {
    return kind_ == kept_kind::unsaved_work ? std::string() : file.original;
  };
  for (const kept_file& file : files)
    if (count[key(file)]++ == 0)
      bytes += file.bytes;
    else
      older.push_back(&file);
  for (auto& [original, number] : count) number = 1;
  for (const kept_file* file : older) {
    const bool fits = ++count[key(*file)] <= most_files && bytes + file->bytes <= most_bytes;
    if (fits)
      bytes += file->bytes;
    else
      place{file->file, with(file->file, note_ending), {}}.remove();
  }
}

} // namespace vesk
