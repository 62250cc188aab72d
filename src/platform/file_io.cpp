#include "platform/file_io.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

namespace vesk {

std::string file_failure(std::string_view action, std::string_view file, int error) {
  return "Cannot " + std::string(action) + " " + std::string(file) + ": " + std::strerror(error) + ".";
}

std::string memory_failure(std::string_view file) {
  return std::string(file) + ": not enough memory for its contents.";
}

file_descriptor& file_descriptor::operator=(file_descriptor&& other) noexcept {
  const file_descriptor closed(std::exchange(number_, other.release()));
  return *this;
}

file_descriptor::~file_descriptor() {
  if (number_ >= 0) close(number_);
}

int file_descriptor::release() noexcept {
  return std::exchange(number_, -1);
}

file_descriptor open_for_reading(const std::filesystem::path& file) {
  file_descriptor result(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!result.is_open() || fstat(result.get(), &status) != 0) throw file_open_exception("open", file.native(), errno);
  if (S_ISDIR(status.st_mode)) throw file_open_exception("open", file.native(), EISDIR);
  return result;
}

std::uint64_t size_of_regular_file(int file) {
  struct stat status {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) return 0;
  return static_cast<std::uint64_t>(status.st_size);
}

std::string read_to_end(int file, std::string_view name, const std::function<bool(std::string_view)>& goes_on) {
  constexpr std::size_t smallest_step = std::size_t{64} << 10;
  std::string result;
  std::size_t filled = 0;
  while (true) {
    if (result.size() - filled < smallest_step) result.resize(result.size() * 2 + smallest_step);
    const ssize_t got = read(file, result.data() + filled, result.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw file_exception("read", name, errno);
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
    if (goes_on && !goes_on({result.data(), filled})) break;
  }
  result.resize(filled);
  return result;
}

std::size_t read_at(int file, std::uint64_t offset, void* first, std::size_t size, void* second, std::size_t more,
                    std::string_view name) {
  const iovec pieces[] = {{first, size}, {second, more}};
  while (true) {
    const ssize_t got = preadv(file, pieces, 2, static_cast<off_t>(offset));
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR) throw file_exception("read", name, errno);
  }
}

void write_all(int file, std::string_view first, std::string_view second, std::string_view name) {
  while (!first.empty() || !second.empty()) {
    const iovec pieces[] = {{const_cast<char*>(first.data()), first.size()},
                            {const_cast<char*>(second.data()), second.size()}};
    const ssize_t put = writev(file, pieces, 2);
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) throw file_exception("write", name, errno);
    const std::size_t of_first = std::min(static_cast<std::size_t>(put), first.size());
    first.remove_prefix(of_first);
    second.remove_prefix(static_cast<std::size_t>(put) - of_first);
  }
}

void start_writeback(int file, std::uint64_t offset, std::uint64_t size) {
  sync_file_range(file, static_cast<off_t>(offset), static_cast<off_t>(size), SYNC_FILE_RANGE_WRITE);
}

} // namespace vesk
