#include "app/kept_results.h"

#include "app/run_recorder.h"
#include "platform/file_identity.h"
#include "platform/file_io.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vesk {

namespace {

namespace fs = std::filesystem;

// Hidden, and fixed: what a killed program has left is replaced by the next run, which holds the lock.
fs::path hidden_name(const fs::path& file) {
  return file.parent_path() / ("." + file.filename().native() + ".previous");
}

fs::path previous_base(const fs::path& base) {
  return base.native() + ".previous";
}

// A file that cannot be removed or renamed stays as it is: the run itself is good.
void delete_file(const fs::path& file) {
  std::error_code ignored;
  fs::remove(file, ignored);
}

bool move_file(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::rename(from, to, error);
  return !error;
}

bool are_one_file(const fs::path& one, const fs::path& other) {
  const auto a = identity_of(one), b = identity_of(other);
  return a && b && a->device == b->device && a->inode == b->inode;
}

} // namespace

fs::path results_file_of(const fs::path& base) {
  return base.native() + ".nc";
}

fs::path previous_results_file_of(const fs::path& base) {
  return results_file_of(previous_base(base));
}

fs::path cancelled_results_of(const fs::path& base) {
  return base.native() + ".cancelled";
}

fs::path base_of_record(const fs::path& base, const run_record& record) {
  const fs::path cancelled = cancelled_results_of(base);
  return std::ranges::count(record.outputs, results_file_of(cancelled).native(), &recorded_file::file) > 0 ? cancelled
                                                                                                           : base;
}

void remove_cancelled_results(const fs::path& base) {
  if (base.empty()) return;
  const fs::path cancelled = cancelled_results_of(base);
  for (const fs::path& file : {results_file_of(cancelled), record_file_of(cancelled)}) delete_file(file);
}

// False if the file does not exist or the copy was cancelled.
bool previous_results::take(const fs::path& file, const fs::path& hidden, const copy_function& copy) {
  delete_file(hidden);
  if (!identity_of(file)) return false;
  std::error_code refused;
  fs::create_hard_link(file, hidden, refused);
  return !refused || copy(file, hidden);
}

void previous_results::hold(const fs::path& base, const copy_function& copy) {
  drop();
  if (base.empty()) return;
  const fs::path results = results_file_of(base), record = record_file_of(base);
  base_ = base;
  try {
    if (take(results, hidden_name(results), copy))
      take(record, hidden_name(record), copy);
    else
      drop();
  } catch (...) {
    drop();
    throw;
  }
}

void previous_results::keep() {
  if (base_.empty()) return;
  const fs::path results = results_file_of(base_), record = record_file_of(base_);
  if (!are_one_file(results, hidden_name(results)) &&
      move_file(hidden_name(results), previous_results_file_of(base_)) &&
      !move_file(hidden_name(record), record_file_of(previous_base(base_))))
    delete_file(record_file_of(previous_base(base_))); // of results that are gone
  drop();
}

void previous_results::drop() {
  if (base_.empty()) return;
  for (const fs::path& file : {results_file_of(base_), record_file_of(base_)}) delete_file(hidden_name(file));
  base_.clear();
}

bool copy_file_in_pieces(const fs::path& from, const fs::path& to, const std::function<bool(int)>& goes_on) {
  constexpr std::size_t piece = std::size_t{1} << 22;
  const file_descriptor source = open_for_reading(from);
  file_descriptor target(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (!target.is_open()) throw file_open_exception("write", to.native(), errno);
  const std::uint64_t size = size_of_regular_file(source.get());
  std::vector<char> bytes(piece);
  try {
    for (std::uint64_t done = 0; done < size;) {
      if (!goes_on(static_cast<int>(100 * done / size))) {
        delete_file(to);
        return false;
      }
      const std::size_t got = read_at(source.get(), done, bytes.data(), bytes.size(), nullptr, 0, from.native());
      if (got == 0) break;
      write_all(target.get(), {bytes.data(), got}, {}, to.native());
      done += got;
    }
    if (close(target.release()) != 0) throw file_exception("write", to.native(), errno);
    std::error_code ignored; // the record of its run names the time
    fs::last_write_time(to, fs::last_write_time(from, ignored), ignored);
  } catch (const file_exception&) {
    delete_file(to);
    throw;
  }
  return true;
}

} // namespace vesk
