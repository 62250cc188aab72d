#include "ui/guard.h"

#include "ui/questions.h"

#include <cstdio>
#include <exception>

namespace vesk {

namespace {

void tell(const char* what) noexcept {
  static bool telling = false; // what fails again and again, such as a timer's work, is told once
  if (telling) return;
  telling = true;
  try {
    ask_in_box("Error", what, box_buttons::ok);
  } catch (...) { // not even memory for a box
    std::fputs("vesk: A command failed, and there is no memory to say why.\n", stderr);
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
