// A helper program that reads one file for this process and answers questions about it, so that nothing that the file
// does to the library that knows its format reaches this process.
#pragma once

#include "platform/child_process.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace vesk {

// The file of a helper program: beside this program, else in <prefix>/lib/vesk.
std::filesystem::path helper_path(const std::string& name);

class helper_program {
public:
  // The conversation is over: `not_started`, with the system's error number; `silent`, no answer in time; `gone`, ended
  // or killed, mostly by the file.
  struct failure {
    enum class way { not_started, silent, gone } how;
    int error = 0;
  };

  // Starts the program with `file` as its handed_descriptor and a socket, both ways, as its standard input. `waiting`
  // is called ten times a second while an answer is waited for, and may throw. After an exception of any function this
  // object is of no more use. The program is killed with this object, and when the thread that made it ends. Throws
  // failure.
  helper_program(const std::filesystem::path& program, const file_descriptor& file,
                 std::chrono::milliseconds longest_silence, std::function<void()> waiting);

  void send(const void* bytes, std::size_t size); // throws failure
  void receive(void* bytes, std::size_t size);    // all of them; throws failure
  std::string receive_text(std::uint64_t size);   // takes memory as bytes come, not as they are announced

private:
  std::chrono::milliseconds longest_silence_;
  std::function<void()> waiting_;
  file_descriptor socket_;
  child_process program_;
};

} // namespace vesk
