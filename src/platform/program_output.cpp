#include "platform/program_output.h"

#include "platform/child_process.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk {

program_end read_program(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                         const file_descriptor& file, std::chrono::milliseconds longest_silence,
                         const std::function<bool(std::string_view)>& take) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return {program_end::way::not_started, errno};
  const file_descriptor reading(ends[0]);
  file_descriptor writing(ends[1]);
  child_process child;
  if (const int error = child.start(program, arguments, {.output = &writing, .file = &file}))
    return {program_end::way::not_started, error};
  writing = file_descriptor();

  std::array<char, std::size_t{64} << 10> piece;
  using clock = std::chrono::steady_clock;
  constexpr int between_asking = 100; // milliseconds
  for (auto heard = clock::now();;) {
    pollfd ready{reading.get(), POLLIN, 0};
    const int events = poll(&ready, 1, between_asking);
    if (events < 0 && errno == EINTR) continue;
    if (events == 0) {
      if (clock::now() - heard >= longest_silence) return {program_end::way::silent, 0};
      if (!take({})) return {program_end::way::stopped, 0};
      continue;
    }
    heard = clock::now();
    const ssize_t got = read(reading.get(), piece.data(), piece.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    if (!take({piece.data(), static_cast<std::size_t>(got)})) return {program_end::way::stopped, 0};
  }
  const int status = child.wait();
  if (WIFSIGNALED(status)) return {program_end::way::signalled, WTERMSIG(status)};
  return {program_end::way::exited, WEXITSTATUS(status)};
}

} // namespace vesk
