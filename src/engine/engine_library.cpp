#include "engine/engine_library.h"

#include "platform/program_paths.h"

#include <cstdlib>
#include <dlfcn.h>

namespace vesk {

namespace fs = std::filesystem;

namespace {

template <class Function>
void take(void* library, const char* name, Function& function, const fs::path& file) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  if (!function) throw engine_library_exception("Engine library " + file.string() + " has no function " + name + ".");
}

} // namespace

std::shared_ptr<const engine_library> engine_library::load(const fs::path& file) {
  std::error_code ignored;
  if (!fs::exists(file, ignored))
    throw engine_library_exception("Engine library " + file.string() + " does not exist.");
  void* library = dlopen(fs::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) throw engine_library_exception("Cannot load engine library " + file.string() + ": " + dlerror() + ".");
  auto result = std::make_shared<engine_library>();
  result->path = file;
  result->bundled = dlsym(library, "vesk_bundled_engine") != nullptr;
  if (const auto* version = static_cast<const char* const*>(dlsym(library, "vesk_engine_version")); version && *version)
    result->version = *version;
  take(library, "execute_model", result->execute_model, file);
  take(library, "get_maximum_parameters", result->get_maximum_parameters, file);
  take(library, "import_export", result->import_export, file);
  take(library, "import_network", result->import_network, file);
  take(library, "load_restart_file", result->load_restart_file, file);
  take(library, "read_hyd_file", result->read_hyd_file, file);
  return result;
}

fs::path engine_library::default_path() {
  if (const char* named = std::getenv("VESK_ENGINE"); named && *named) return named;
  const fs::path beside = program_directory() / file_name;
  const fs::path installed = install_prefix() / "lib" / "vesk" / file_name;
  std::error_code ignored;
  return !fs::exists(beside, ignored) && fs::exists(installed, ignored) ? installed : beside;
}

} // namespace vesk
