// A program that works for this one and ends with its owner.
#pragma once

#include "platform/file_io.h"

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vesk {

// The descriptor under which a program finds the file that it is handed.
inline constexpr int handed_descriptor = 3;

// What a program gets of this process's files; null leads nowhere. Its standard error leads nowhere.
struct child_files {
  const file_descriptor* input = nullptr;  // its standard input
  const file_descriptor* output = nullptr; // its standard output
  const file_descriptor* file = nullptr;   // its handed_descriptor
};

class child_process {
public:
  child_process() = default;
  ~child_process() { stop(); }
  child_process(const child_process&) = delete;
  child_process& operator=(const child_process&) = delete;

  // Starts a program, without a shell, with an empty environment and no other files than those given. Keys pressed on
  // the terminal do not reach it. Returns 0 or the system's error number. Call it once.
  int start(const std::filesystem::path& program, const std::vector<std::string>& arguments, const child_files& files);

  // Waits for its end; returns its status as `waitpid` gives it.
  int wait();

  // Kills it, if it is there, and waits for its end.
  void stop();

private:
  pid_t number_ = -1;
};

} // namespace vesk
