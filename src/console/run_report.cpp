#include "console/run_report.h"

#include <cerrno>
#include <sys/mman.h>
#include <unistd.h>

namespace vesk {

namespace {

constexpr const char* memory_name = "the report of a run";
constexpr char whole_mark = 'w', part_mark = 'p';

} // namespace

// Not a pipe: a child that crashes has nobody who reads on, and a record can be longer than a pipe holds.
run_report::run_report() : memory_(memfd_create("vesk-run", MFD_CLOEXEC)) {
  if (!memory_.is_open()) throw file_exception("create", memory_name, errno);
}

void run_report::put(const std::filesystem::path& record_file, const std::string& json, bool whole) {
  if (ftruncate(memory_.get(), 0) != 0 || lseek(memory_.get(), 0, SEEK_SET) != 0)
    throw file_exception("write", memory_name, errno);
  write_all(memory_.get(), std::string(1, whole ? whole_mark : part_mark) + record_file.native() + '\0', json,
            memory_name);
}

run_report::content run_report::get() const {
  lseek(memory_.get(), 0, SEEK_SET);
  const std::string all = read_to_end(memory_.get(), memory_name);
  const std::size_t end = all.find('\0');
  if (end == all.npos) return {};
  return {all[0] == whole_mark, all.substr(1, end - 1), all.substr(end + 1)};
}

} // namespace vesk
