#include "output/output_file.h"

#include "core/errors.h"
#include "core/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace reference_engine {

namespace {

// Only letters, digits and underscores, so that the parts of a file name can be told apart.
std::string host_name() {
  constexpr std::size_t longest = 32;
  char name[256] = "";
  gethostname(name, sizeof name - 1);
  std::string host = std::string(name).substr(0, longest);
  const auto is_plain = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  };
  std::ranges::replace_if(
      host, [&](char c) { return !is_plain(c); }, '_');
  return host.empty() ? "_" : host;
}

std::string random_digits() {
  std::random_device random;
  char digits[17];
  std::snprintf(digits, sizeof digits, "%08x%08x", random(), random());
  return digits;
}

} // namespace

OutputFile::OutputFile(const std::filesystem::path& base, std::filesystem::path final_name)
    : final_(std::move(final_name)) {
  while (!create(base))
    if (errno != EEXIST) throw WriteError(final_.string(), errno);
}

OutputFile::~OutputFile() {
  if (!part_.empty()) unlink(part_.c_str());
  if (file_ >= 0) close(file_);
}

// False on failure, with the cause in errno.
bool OutputFile::create(const std::filesystem::path& base) {
  part_ = text(base.string(), ".part-", host_name(), "-", getpid(), "-", random_digits());
  file_ = open(part_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
  return file_ >= 0;
}

std::filesystem::path OutputFile::temporary() const {
  return text("/proc/self/fd/", file_);
}

void OutputFile::write_at(std::uint64_t offset, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = pwrite(file_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw WriteError(final_.string(), errno);
    offset += static_cast<std::uint64_t>(written);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void OutputFile::publish() {
  struct stat named {
  }, written{};
  if (lstat(part_.c_str(), &named) == 0 && fstat(file_, &written) == 0 &&
      (named.st_dev != written.st_dev || named.st_ino != written.st_ino))
    throw WriteError(final_.string(), "another program has replaced " + part_.string());
  if (close(std::exchange(file_, -1)) != 0) throw WriteError(final_.string(), errno); // a server may say so late
  std::error_code error;
  std::filesystem::rename(part_, final_, error);
  if (error) throw WriteError(final_.string(), error.value());
  part_.clear();
}

} // namespace reference_engine
