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

} // namespace vesk
