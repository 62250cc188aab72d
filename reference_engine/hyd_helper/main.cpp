// vesk-hyd: reads a hydrodynamic file for the engine. The libraries for this format trust what they read; in a separate
// process a bad file can harm neither the engine nor other files. See protocol.h.
#include "hyd_helper/hyd_content.h"
#include "hyd_helper/protocol.h"
#include "hyd_helper/refusal.h"
#include "sandbox/channel.h"
#include "sandbox/classic_file.h"
#include "sandbox/confine.h"
#include "sandbox/limits.h"
#include "sandbox/other_files.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>

namespace {

using namespace reference_engine::hyd;

constexpr std::uint64_t most_memory = std::uint64_t{1} << 30; // bytes, in addition to the program itself
constexpr unsigned seconds_for_an_answer = 5;                 // of processor time

// False when the other side has closed the socket.
bool send(Kind kind, std::string_view bytes) {
  const Answer answer{kind, bytes.size()};
  return sandbox::send(channel, &answer, sizeof answer) && sandbox::send(channel, bytes.data(), bytes.size());
}
bool receive(Request& request) {
  return sandbox::receive(channel, &request, sizeof request);
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
  for (const std::string& cause : {sandbox::other_files_in(name.c_str()), sandbox::missing_end_of(name.c_str())})
    if (!cause.empty()) refuse(cause);
  HydContent file(name.c_str());
  bool heard = send(Kind::content, file.content());
  for (Request request{}; heard && receive(request); heard = send_row(file, request))
    sandbox::limit_seconds(seconds_for_an_answer);
}

} // namespace

int main() {
  if (!sandbox::is_socket(channel)) {
    std::fputs("vesk-hyd reads hydrodynamic files for the engine. It cannot be used alone.\n", stderr);
    return 2;
  }
  if (!sandbox::die_with_parent(channel)) return 1;
  sandbox::limit_memory(most_memory);
  sandbox::limit_seconds(seconds_for_an_answer);
  try {
    confine();
    serve();
  } catch (const Refusal& refusal) {
    send(Kind::refusal, refusal.cause);
  } catch (const std::bad_alloc&) { // nothing is sent: the engine treats it like a crash
  }
  _exit(0); // skips the libraries' cleanup
}
