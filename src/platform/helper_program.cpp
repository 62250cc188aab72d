#include "platform/helper_program.h"

#include "platform/program_paths.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>

namespace vesk {

namespace fs = std::filesystem;

fs::path helper_path(const std::string& name) {
  const fs::path beside = program_directory() / name;
  std::error_code ignored;
  return fs::exists(beside, ignored) ? beside : install_prefix() / "lib" / "vesk" / name;
}

helper_program::helper_program(const fs::path& program, const file_descriptor& file,
                               std::chrono::milliseconds longest_silence, std::function<void()> waiting)
    : longest_silence_(longest_silence), waiting_(std::move(waiting)) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) throw failure{failure::way::not_started, errno};
  socket_ = file_descriptor(ends[0]);
  const file_descriptor other_end(ends[1]);
  if (const int error = program_.start(program, {}, {.input = &other_end, .file = &file}))
    throw failure{failure::way::not_started, error};
}

void helper_program::send(const void* bytes, std::size_t size) {
  for (const char* at = static_cast<const char*>(bytes); size > 0;) {
    const ssize_t sent = ::send(socket_.get(), at, size, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) throw failure{failure::way::gone};
    at += sent, size -= static_cast<std::size_t>(sent);
  }
}

void helper_program::receive(void* bytes, std::size_t size) {
  using clock = std::chrono::steady_clock;
  constexpr int between_asking = 100; // milliseconds
  auto heard = clock::now();
  for (char* at = static_cast<char*>(bytes); size > 0;) {
    pollfd ready{socket_.get(), POLLIN, 0};
    if (poll(&ready, 1, between_asking) <= 0) {
      if (waiting_) waiting_();
      if (clock::now() - heard > longest_silence_) throw failure{failure::way::silent};
      continue;
    }
    const ssize_t got = recv(socket_.get(), at, size, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) throw failure{failure::way::gone};
    at += got, size -= static_cast<std::size_t>(got);
    heard = clock::now();
  }
}

std::string helper_program::receive_text(std::uint64_t size) {
  constexpr std::size_t piece = std::size_t{1} << 20;
  std::string bytes;
  while (bytes.size() < size) {
    const std::size_t begin = bytes.size();
    bytes.resize(begin + std::min<std::uint64_t>(piece, size - begin));
    receive(bytes.data() + begin, bytes.size() - begin);
  }
  return bytes;
}

} // namespace vesk
