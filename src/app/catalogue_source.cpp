#include "app/catalogue_source.h"

#include "platform/program_paths.h"
#include "query/sqlite_catalogue_store.h"

namespace vesk {

namespace fs = std::filesystem;

fs::path catalogue_source::default_directory() {
  const fs::path beside = program_directory() / "database";
  const fs::path installed = install_prefix() / "share" / "vesk" / "database";
  std::error_code ignored;
  return !fs::exists(beside, ignored) && fs::exists(installed, ignored) ? installed : beside;
}

std::shared_ptr<const model_catalogue> catalogue_source::get() {
  state now;
  now.file = directory_ / "catalogue.sqlite";
  std::error_code error;
  now.size = fs::file_size(now.file, error);
  if (error) throw catalogue_exception("Cannot open catalogue " + now.file.string() + ": " + error.message() + ".");
  now.written = fs::last_write_time(now.file, error);
  if (!catalogue_ || !(now == read_state_)) {
    sqlite_catalogue_store store(now.file);
    catalogue_ = read_catalogue(store);
    read_state_ = now;
  }
  return catalogue_;
}

} // namespace vesk
