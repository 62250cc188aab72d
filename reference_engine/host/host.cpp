#include "host/host.h"

#include <algorithm>

namespace reference_engine {

void Host::call(char mode, std::string_view keyword, const Arguments& arguments) {
  std::array<char, 32> name{}; // the longest keyword has 16 letters
  name[0] = mode;
  std::copy_n(keyword.begin(), std::min(keyword.size(), name.size() - 2), name.begin() + 1);
  callback_(name.data(), arguments[0], arguments[1], arguments[2], arguments[3], arguments[4]);
}

void Host::icon_line(std::int32_t icon, std::string line) {
  put("ICONINFO", Arguments{&icon, line.data()});
}

void Host::status(std::string description, std::int32_t code) {
  put("STATUS", Arguments{description.data(), &code});
}

void Host::stop_if_cancelled() {
  if (integer("CANCEL") != 0) throw Cancelled{};
}

} // namespace reference_engine
