#include "platform/side_file.h"

#include "platform/file_io.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vesk {

int append_to_side_file(const std::filesystem::path& file, std::string_view text) {
  const file_descriptor opened(
      open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666));
  struct stat status {};
  if (!opened.is_open() || fstat(opened.get(), &status) != 0) return errno;
  if (!S_ISREG(status.st_mode)) return EINVAL;
  if (status.st_nlink > 1) return EMLINK;
  while (!text.empty()) {
    const ssize_t put = write(opened.get(), text.data(), text.size());
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return errno;
    text.remove_prefix(static_cast<std::size_t>(put));
  }
  return 0;
}

} // namespace vesk
