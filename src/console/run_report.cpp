#include "console/run_report.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace vesk {

namespace {

constexpr const char* memory_name = "the report of a run";
constexpr std::size_t size_bytes = sizeof(std::uint64_t); // before each report
constexpr char whole_mark = 'w', part_mark = 'p';

} // namespace

// Not a pipe: a child that crashes has nobody who reads on, and a record can be longer than a pipe holds.
run_report::run_report() : memory_(memfd_create("vesk-run", MFD_CLOEXEC)) {
  if (!memory_.is_open()) throw file_exception("create", memory_name, errno);
}

// Each report follows those before it: a child that ends while it writes leaves the last one whole.
void run_report::put(const std::filesystem::path& record_file, const std::string& json, bool whole) {
  const std::string file = record_file.native() + '\0';
  const std::uint64_t size = 1 + file.size() + json.size();
  std::string head(size_bytes, '\0');
  std::memcpy(head.data(), &size, size_bytes);
  write_all(memory_.get(), head + (whole ? whole_mark : part_mark) + file, json, memory_name);
}

run_report::content run_report::get() const {
  lseek(memory_.get(), 0, SEEK_SET);
  const std::string all = read_to_end(memory_.get(), memory_name);
  content last;
  for (std::string_view rest = all; rest.size() > size_bytes;) {
    std::uint64_t size = 0;
    std::memcpy(&size, rest.data(), size_bytes);
    rest.remove_prefix(size_bytes);
    if (rest.size() < size) break;
    const std::size_t end = rest.find('\0');
    last = {rest[0] == whole_mark, rest.substr(1, end - 1), std::string(rest.substr(end + 1, size - end - 1))};
    rest.remove_prefix(size);
  }
  return last;
}

} // namespace vesk
