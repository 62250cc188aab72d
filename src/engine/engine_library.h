// The engine: a shared library that exports the six functions of sdk/vesk_engine.h, loaded at run time.
#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "vesk_engine.h"

namespace vesk {

// The library cannot be loaded or lacks a function: one sentence with library and cause.
class engine_library_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Stays loaded until the process ends: an engine may have its own threads and thread-local data.
class engine_library {
public:
  static constexpr const char* file_name = "libpreveskwdll.so";

  // Throws engine_library_exception.
  static std::shared_ptr<const engine_library> load(const std::filesystem::path& file);

  // Where the library is loaded from: VESK_ENGINE if it is set, then the folder of the executable, then
  // <prefix>/lib/vesk/. The first that exists; if none does, the path in the folder of the executable.
  static std::filesystem::path default_path();

  std::filesystem::path path;
  std::string version;  // as the engine says, in `vesk_engine_version`; empty: it does not
  bool bundled = false; // it says that it is the bundled engine, whose return codes are known
  decltype(&::execute_model) execute_model = nullptr;
  decltype(&::get_maximum_parameters) get_maximum_parameters = nullptr;
  decltype(&::import_export) import_export = nullptr;
  decltype(&::import_network) import_network = nullptr;
  decltype(&::load_restart_file) load_restart_file = nullptr;
  decltype(&::read_hyd_file) read_hyd_file = nullptr;
};

} // namespace vesk
