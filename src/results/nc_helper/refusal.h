// A file that cannot serve.
#pragma once

#include <string>

namespace vesk::nc {

struct refusal {
  std::string cause; // continues a sentence that begins with the file's name; without a full stop
};

[[noreturn]] inline void refuse(std::string cause) {
  throw refusal{std::move(cause)};
}

// Throws refusal unless `status`, of the NetCDF library, is success.
void check(int status);

} // namespace vesk::nc
