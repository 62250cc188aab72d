#include "ui/guard.h"

#include "ui/questions.h"

#include <cstdio>
#include <exception>

namespace vesk {

namespace {

void tell(const char* what) noexcept {
  static bool telling = false; // a repeated failure, for example in a timer, is shown once
  if (telling) return;
  telling = true;
  try {
    ask_in_box("Error", what, box_buttons::ok);
  } catch (...) { // no memory even for a box
    std::fputs("vesk: A command failed: out of memory.\n", stderr);
  }
  telling = false;
}

} // namespace

void attempt(const std::function<void()>& work) noexcept {
  try {
    work();
  } catch (const std::exception& error) {
    tell(error.what());
  } catch (...) {
    tell("The command failed for an unknown reason.");
  }
}

} // namespace vesk
