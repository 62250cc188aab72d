// The reason why a file is unusable.
#pragma once

#include <string>

namespace vesk::nc {

struct refusal {
  std::string cause; // continues a sentence that starts with the file's name; no full stop
};

[[noreturn]] inline void refuse(std::string cause) {
  throw refusal{std::move(cause)};
}

// Throws refusal unless `status`, from the NetCDF library, is success.
void check(int status);

} // namespace vesk::nc
