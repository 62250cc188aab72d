#include "platform/file_identity.h"

#include <sys/stat.h>

namespace vesk {

namespace {

std::optional<file_identity> identity_in(const struct stat& status) {
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  return file_identity{status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec,
                       status.st_mtim.tv_nsec};
}

} // namespace

std::optional<file_identity> identity_of(const std::filesystem::path& file) {
  struct stat status {};
  return stat(file.c_str(), &status) == 0 ? identity_in(status) : std::nullopt;
}

std::optional<file_identity> identity_of(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 ? identity_in(status) : std::nullopt;
}

} // namespace vesk
