// Runs a program as a user does.
#pragma once

#include <string>
#include <vector>

namespace vesk {

struct program_result {
  int status = -1; // the exit status, or 128 and the signal that ended it
  std::string out;
  std::string err;
};

// Runs a program to its end. `signal`, if given, is sent once the program has written to its standard output.
program_result run_program(const std::string& program, const std::vector<std::string>& arguments, int signal = 0);

// A program that runs alongside the test. It is killed by the destructor.
class background_program {
public:
  background_program(const std::string& program, const std::vector<std::string>& arguments);
  ~background_program();
  background_program(const background_program&) = delete;
  background_program& operator=(const background_program&) = delete;

  std::string read_line(); // of its standard output, without the line's end
  void kill_and_wait();    // by SIGKILL; returns when no process has its standard output open

private:
  int process_ = -1, output_ = -1;
};

} // namespace vesk
