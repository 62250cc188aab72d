#include "app/sample_river.h"

#include "platform/file_io.h"
#include "platform/program_paths.h"

#include <system_error>

namespace vesk {

namespace {

namespace fs = std::filesystem;

constexpr const char* data_file = "roanoke.vki";
constexpr const char* beside_it[] = {"data", "roanoke.measured.json"}; // tables, measured series

} // namespace

fs::path sample_folder() {
  for (const fs::path& folder :
       {install_prefix() / "share/vesk/examples/roanoke", program_directory() / "../../roanoke"}) {
    std::error_code ignored;
    if (fs::exists(folder / data_file, ignored)) return folder.lexically_normal();
  }
  return {};
}

// The data file comes last: where it is, the copy is whole.
fs::path copy_sample(const fs::path& from, const fs::path& documents) {
  const fs::path folder = documents / "Vesk sample river";
  fs::path copy = folder / data_file;
  std::error_code error;
  if (fs::exists(copy, error)) return copy;
  const auto check = [&](const fs::path& what) {
    if (error) throw file_exception("copy the sample river to", what.native(), error.value());
  };
  fs::create_directories(folder, error);
  check(folder);
  const auto options = fs::copy_options::recursive | fs::copy_options::overwrite_existing;
  for (const char* name : beside_it) {
    if (!fs::exists(from / name, error)) continue;
    fs::copy(from / name, folder / name, options, error);
    check(folder / name);
  }
  fs::copy_file(from / data_file, copy, error);
  check(copy);
  fs::permissions(copy, fs::perms::owner_write, fs::perm_options::add, error);
  return copy;
}

} // namespace vesk
