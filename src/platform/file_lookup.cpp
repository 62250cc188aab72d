#include "platform/file_lookup.h"

#include <algorithm>
#include <string>

namespace vesk {

namespace fs = std::filesystem;

fs::path find_file(std::string_view name, const fs::path& folder) {
  if (name.empty()) return {};
  std::string with_slashes(name);
  std::replace(with_slashes.begin(), with_slashes.end(), '\\', '/');
  std::error_code ignored;
  // The unchanged name first: on this platform a name may contain a backslash.
  for (const std::string& spelling : {std::string(name), with_slashes})
    for (const fs::path& candidate : {folder / spelling, fs::path(spelling)})
      if (fs::is_regular_file(candidate, ignored)) return candidate;
  return {};
}

} // namespace vesk
