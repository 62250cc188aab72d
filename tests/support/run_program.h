// Running a program as its user does.
#pragma once

#include <string>
#include <vector>

namespace vesk {

struct program_result {
  int status = -1; // the exit status, or 128 and the signal that ended it
  std::string out;
  std::string err;
};

// Runs a program to its end. With a signal, that is sent once the program has written something to its standard output.
program_result run_program(const std::string& program, const std::vector<std::string>& arguments, int signal = 0);

// A program that goes on while the test does. It is killed with this object.
class background_program {
public:
  background_program(const std::string& program, const std::vector<std::string>& arguments);
  ~background_program();
  background_program(const background_program&) = delete;
  background_program& operator=(const background_program&) = delete;

  std::string read_line(); // of its standard output, without the line's end
  void kill_and_wait();    // by SIGKILL; returns when nobody has its standard output any more

private:
  int process_ = -1, output_ = -1;
};

} // namespace vesk
