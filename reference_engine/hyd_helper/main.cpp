// vesk-hyd: reads a hydrodynamic file for the engine. The libraries for this format trust what they read; in a separate
// process a bad file can harm neither the engine nor other files. See protocol.h.
#include "hyd_helper/hyd_content.h"
#include "hyd_helper/other_files.h"
#include "hyd_helper/protocol.h"
#include "hyd_helper/refusal.h"
#include "sandbox/confine.h"

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>

namespace {

using namespace reference_engine::hyd;

constexpr rlim_t most_memory = rlim_t{1} << 30; // bytes, in addition to the program itself
constexpr rlim_t seconds_for_an_answer = 5;     // of processor time

// False when the other side has closed the socket.
bool send(const void* bytes, std::size_t size) {
  for (const char* at = static_cast<const char*>(bytes); size > 0;) {
    const ssize_t sent = write(channel, at, size);
    if (sent <= 0) return false;
    at += sent, size -= static_cast<std::size_t>(sent);
  }
  return true;
}
bool send(Kind kind, std::string_view bytes) {
  const Answer answer{kind, bytes.size()};
  return send(&answer, sizeof answer) && send(bytes.data(), bytes.size());
}
bool receive(Request& request) {
  char* const bytes = reinterpret_cast<char*>(&request);
  for (std::size_t got = 0; got < sizeof request;) {
    const ssize_t more = read(channel, bytes + got, sizeof request - got);
    if (more <= 0) return false;
    got += static_cast<std::size_t>(more);
  }
  return true;
}

enum class Limit { for_good, renewable };
void limit(decltype(RLIMIT_CPU) what, rlim_t most, Limit kind) {
  rlimit both{};
  getrlimit(what, &both);
  both.rlim_cur = std::min(most, both.rlim_max);
  if (kind == Limit::for_good) both.rlim_max = both.rlim_cur;
  setrlimit(what, &both);
}

// Address space in use, which a sanitizer makes large; 0 if the system does not say.
rlim_t memory_in_use() {
  unsigned long long pages = 0;
  if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%llu", &pages) != 1) pages = 0;
    std::fclose(file);
  }
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

void begin_answer() {
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  limit(RLIMIT_CPU, static_cast<rlim_t>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) + 1 + seconds_for_an_answer,
        Limit::renewable);
}

void confine() {
  if (const std::string cause = sandbox::confine_to(the_file); !cause.empty())
    refuse("can't be read: its reader can't be confined to this one file: " + cause);
}

bool send_row(const HydContent& file, const Request& request) {
  try {
    const Row row = file.row(request.quantity, request.time);
    return send(Kind::row, {reinterpret_cast<const char*>(row.data()), row.size() * sizeof(double)});
  } catch (const Refusal& refusal) {
    return send(Kind::refusal, refusal.cause);
  }
}

void serve() {
  const std::string name = sandbox::name_of(the_file);
  refuse_other_files(name.c_str());
  HydContent file(name.c_str());
  bool heard = send(Kind::content, file.content());
  for (Request request{}; heard && receive(request); heard = send_row(file, request)) begin_answer();
}

bool is_socket(int file) {
  int type = 0;
  socklen_t size = sizeof type;
  return getsockopt(file, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

} // namespace

int main() {
  if (!is_socket(channel)) {
    std::fputs("vesk-hyd reads hydrodynamic files for the engine. It cannot be used alone.\n", stderr);
    return 2;
  }
  if (!sandbox::die_with_parent(channel)) return 1;
  limit(RLIMIT_CORE, 0, Limit::for_good);
  if (const rlim_t used = memory_in_use()) limit(RLIMIT_AS, used + most_memory, Limit::for_good);
  begin_answer();
  try {
    confine();
    serve();
  } catch (const Refusal& refusal) {
    send(Kind::refusal, refusal.cause);
  } catch (const std::bad_alloc&) { // nothing is sent: the engine treats it like a crash
  }
  _exit(0); // skips the libraries' cleanup
}
