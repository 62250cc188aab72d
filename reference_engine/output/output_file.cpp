#include "output/output_file.h"

#include "core/errors.h"
#include "core/text.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <unistd.h>

namespace reference_engine {

namespace {

constexpr const char* mark = ".part-";

// Removes what processes that are gone have left unfinished under this name.
void remove_leftovers(const std::filesystem::path& final_name) {
  const std::string head = final_name.filename().string() + mark;
  std::error_code error;
  const auto folder = final_name.has_parent_path() ? final_name.parent_path() : std::filesystem::path(".");
  std::filesystem::directory_iterator entry(folder, error), end;
  for (; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    int process = 0;
    if (!name.starts_with(head)) continue;
    const auto read = std::from_chars(name.data() + head.size(), name.data() + name.size(), process);
    if (read.ptr != name.data() + name.size() || process <= 0) continue;
    std::error_code ignored;
    if (kill(process, 0) != 0 && errno == ESRCH) std::filesystem::remove(entry->path(), ignored);
  }
}

} // namespace

OutputFile::OutputFile(std::filesystem::path final_name)
    : final_(std::move(final_name)), temporary_(text(final_.string(), mark, getpid())) {
  remove_leftovers(final_);
}

OutputFile::~OutputFile() {
  std::error_code ignored;
  if (!temporary_.empty()) std::filesystem::remove(temporary_, ignored);
}

void OutputFile::publish() {
  std::error_code error;
  std::filesystem::rename(temporary_, final_, error);
  if (error) throw RunError(text(final_.string(), ": can't be written: ", error.message(), "."));
  temporary_.clear();
}

} // namespace reference_engine
