// What a target asks for beyond not crashing.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace vesk::fuzz {

// Ends the program, so that the input at work is kept.
[[noreturn]] inline void fail(const std::string& what) {
  std::fprintf(stderr, "\nfailed: %s\n", what.c_str());
  std::abort();
}

inline void demand(bool holds, const char* what) {
  if (!holds) fail(what);
}

// A refusal is one sentence about the file of this name.
inline void demand_sentence(std::string_view text, std::string_view name) {
  if (!text.starts_with(name) || !text.ends_with('.') || text.size() > name.size() + 4000)
    fail("no good sentence: " + std::string(text));
}

} // namespace vesk::fuzz
