#include "host/hydro_reader.h"

#include "core/errors.h"
#include "core/text.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

namespace reference_engine {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// In the folder of the library that contains this code.
std::string helper_program() {
  Dl_info here{};
  if (dladdr(reinterpret_cast<const void*>(&helper_program), &here) == 0) return "vesk-hyd";
  return std::filesystem::absolute(here.dli_fname).replace_filename("vesk-hyd").string();
}

// A file descriptor, closed by its owner. It is moved above the numbers that the program will get, so that setting
// those up overwrites none.
class Descriptor {
public:
  explicit Descriptor(int number) : number_(number < 0 ? -1 : fcntl(number, F_DUPFD_CLOEXEC, hyd::the_file + 1)) {
    const int cause = errno;
    if (number >= 0) close(number);
    errno = cause;
  }
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return number_; }

private:
  int number_;
};

// Does not block on things that only look like a file, such as a pipe without a writer.
int open_regular(const std::string& name) {
  const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  struct stat status {};
  if (file < 0 || (fstat(file, &status) == 0 && S_ISREG(status.st_mode))) return file;
  close(file);
  errno = EINVAL;
  return -1;
}

// The program inherits the socket and the file and nothing else of this process. Signals from a terminal do not reach
// it.
int spawn(const std::string& program, int file, int socket, pid_t& child) {
  std::array<char*, 2> words = {const_cast<char*>(program.c_str()), nullptr};
  std::array<char*, 1> no_environment = {nullptr};
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, socket, hyd::channel);
  posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&files, file, hyd::the_file);
  posix_spawn_file_actions_addclosefrom_np(&files, hyd::the_file + 1);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  const int error = posix_spawn(&child, program.c_str(), &files, &attributes, words.data(), no_environment.data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return error;
}

// Takes numbers and texts off the front of an answer. Fails when there are none left.
class Unpacker {
public:
  explicit Unpacker(std::string_view bytes) : left_(bytes) {}

  bool take(std::uint64_t& number) {
    if (left_.size() < sizeof number) return false;
    std::memcpy(&number, left_.data(), sizeof number);
    left_.remove_prefix(sizeof number);
    return true;
  }
  bool take(HydroReader::Row& row, std::uint64_t size) {
    if (left_.size() / sizeof(double) < size) return false;
    row.resize(size);
    if (size > 0) std::memcpy(row.data(), left_.data(), size * sizeof(double));
    left_.remove_prefix(size * sizeof(double));
    return true;
  }
  bool take(std::string& text) {
    std::uint64_t size = 0;
    if (!take(size) || left_.size() < size) return false;
    text = left_.substr(0, size);
    left_.remove_prefix(size);
    return true;
  }
  bool is_empty() const { return left_.empty(); }

private:
  std::string_view left_;
};

bool unpack(std::string_view bytes, HydroReader::Content& content) {
  Unpacker packed(bytes);
  std::uint64_t times = 0, segments = 0, links = 0;
  if (!packed.take(times) || !packed.take(segments) || !packed.take(links)) return false;
  if (!packed.take(content.times, times) || !packed.take(content.lengths, segments) ||
      !packed.take(content.widths, segments) || !packed.take(content.from, links) || !packed.take(content.to, links) ||
      !packed.take(content.time_units))
    return false;
  content.names.resize(segments);
  for (std::string& name : content.names)
    if (!packed.take(name)) return false;
  return packed.is_empty();
}

} // namespace

HydroReader::HydroReader(std::string file, Waiting waiting, milliseconds longest_silence)
    : file_(std::move(file)), waiting_(std::move(waiting)), longest_silence_(longest_silence) {
  start();
}

HydroReader::~HydroReader() {
  stop();
}

void HydroReader::start() {
  const Descriptor file(open_regular(file_));
  if (file.get() < 0) refuse(text("can't be read: ", std::strerror(errno)));
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
    refuse(text("can't be read: ", std::strerror(errno)));
  socket_ = ends[0];
  const std::string program = helper_program();
  const int error = spawn(program, file.get(), Descriptor(ends[1]).get(), program_);
  if (error == 0) return;
  close(socket_);
  refuse(text("the program that reads hydrodynamic files can't be started: ", program, ": ", std::strerror(error)));
}

void HydroReader::stop() {
  close(socket_);
  kill(program_, SIGKILL);
  while (waitpid(program_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

void HydroReader::refuse(const std::string& cause) const {
  throw InputError(text(file_, ": ", cause, "."));
}

void HydroReader::receive(char* bytes, std::size_t size) {
  const auto poll_once = [this] {
    pollfd ready{socket_, POLLIN, 0};
    return poll(&ready, 1, 100);
  };
  for (auto heard = steady_clock::now(); size > 0;) {
    if (poll_once() <= 0) {
      if (waiting_) waiting_();
      if (steady_clock::now() - heard > longest_silence_) refuse_damaged();
      continue;
    }
    const ssize_t got = recv(socket_, bytes, size, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) refuse_damaged();
    bytes += got, size -= static_cast<std::size_t>(got);
    heard = steady_clock::now();
  }
}

// Memory grows with the bytes received, not with the size announced.
std::string HydroReader::answer(hyd::Kind expected) {
  constexpr std::size_t piece = std::size_t{1} << 20;
  hyd::Answer head{};
  receive(reinterpret_cast<char*>(&head), sizeof head);
  std::string bytes;
  while (bytes.size() < head.size) {
    const std::size_t begin = bytes.size();
    bytes.resize(begin + std::min<std::size_t>(piece, head.size - begin));
    receive(bytes.data() + begin, bytes.size() - begin);
  }
  if (head.kind == hyd::Kind::refusal) refuse(bytes);
  if (head.kind != expected) refuse_damaged();
  return bytes;
}

HydroReader::Content HydroReader::content() {
  Content content;
  if (!unpack(answer(hyd::Kind::content), content)) refuse_damaged();
  return content;
}

void HydroReader::read_row(Quantity quantity, std::size_t time, Row& row) {
  const hyd::Request request{quantity, time};
  if (::send(socket_, &request, sizeof request, MSG_NOSIGNAL) != sizeof request) refuse_damaged();
  const std::string bytes = answer(hyd::Kind::row);
  if (bytes.size() != row.size() * sizeof(double)) refuse_damaged();
  if (!row.empty()) std::memcpy(row.data(), bytes.data(), bytes.size());
}

} // namespace reference_engine
