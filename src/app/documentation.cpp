#include "app/documentation.h"

#include "platform/program_paths.h"

namespace vesk {

namespace fs = std::filesystem;

fs::path documentation_directory() {
  const fs::path beside = program_directory() / "", installed = install_prefix() / "share/doc/vesk/";
  std::error_code ignored;
  const bool only_installed =
      !fs::exists(beside / "documentation.xml", ignored) && fs::exists(installed / "documentation.xml", ignored);
  return only_installed ? installed : beside;
}

} // namespace vesk
