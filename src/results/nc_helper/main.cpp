// vesk-nc: reads NetCDF results for the programs that show them. The format libraries trust their input, so they run
// confined in this process: a malicious file cannot affect the programs or other files. See protocol.h.
#include "results/nc_helper/content.h"
#include "results/nc_helper/protocol.h"
#include "results/nc_helper/refusal.h"
#include "sandbox/channel.h"
#include "sandbox/classic_file.h"
#include "sandbox/confine.h"
#include "sandbox/limits.h"
#include "sandbox/other_files.h"

#include <unistd.h>

#include <cstdio>
#include <new>
#include <string>
#include <string_view>

namespace {

using namespace vesk::nc;

constexpr std::uint64_t most_memory = std::uint64_t{1} << 30;        // bytes, in addition to the program itself
constexpr unsigned seconds_to_open = 20, seconds_for_an_answer = 60; // of processor time; 1e9 values take 10

bool send(kind what, std::string_view bytes) {
  const answer head{what, bytes.size()};
  return sandbox::send(channel, &head, sizeof head) && sandbox::send(channel, bytes.data(), bytes.size());
}

bool send_answer(const content& file, const question& asked) {
  try {
    const auto values = file.answer_to(asked);
    return send(asked.wanted, {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(double)});
  } catch (const refusal& refused) {
    return send(kind::refusal, refused.cause);
  }
}

void serve() {
  if (const std::string cause = sandbox::confine_to(the_file); !cause.empty())
    refuse("cannot be read: its reader cannot be confined to this one file: " + cause);
  const std::string name = sandbox::name_of(the_file);
  for (const std::string& cause : {sandbox::other_files_in(name.c_str()), sandbox::missing_end_of(name.c_str())})
    if (!cause.empty()) refuse(cause);
  const content file(name.c_str());
  bool heard = send(kind::content, file.packed());
  for (question asked{}; heard && sandbox::receive(channel, &asked, sizeof asked); heard = send_answer(file, asked))
    sandbox::limit_seconds(seconds_for_an_answer);
}

} // namespace

int main() {
  if (!sandbox::is_socket(channel)) {
    std::fputs("vesk-nc reads results for vesk and vesk-results. It cannot be used alone.\n", stderr);
    return 2;
  }
  if (!sandbox::die_with_parent(channel)) return 1;
  sandbox::limit_memory(most_memory);
  sandbox::limit_seconds(seconds_to_open);
  try {
    serve();
  } catch (const refusal& refused) {
    send(kind::refusal, refused.cause);
  } catch (const std::bad_alloc&) {
    send(kind::refusal, "takes more than 1 GB of memory to read");
  }
  _exit(0); // skips the libraries' cleanup
}
