#include "app/catalogue_source.h"

#include "platform/program_paths.h"
#include "query/paradox_catalogue_store.h"
#include "query/sqlite_catalogue_store.h"

namespace vesk {

namespace fs = std::filesystem;

fs::path catalogue_source::default_directory() {
  const fs::path beside = program_directory() / "database";
  const fs::path installed = install_prefix() / "share" / "vesk" / "database";
  std::error_code ignored;
  return !fs::exists(beside, ignored) && fs::exists(installed, ignored) ? installed : beside;
}

std::vector<catalogue_source::file_state> catalogue_source::state_of(const std::vector<fs::path>& files) {
  std::vector<file_state> states;
  for (const fs::path& file : files) {
    std::error_code unreadable; // reading reports the cause
    states.push_back({file, fs::last_write_time(file, unreadable), fs::file_size(file, unreadable)});
  }
  return states;
}

std::shared_ptr<const model_catalogue> catalogue_source::get() {
  const fs::path database = directory_ / "catalogue.sqlite";
  std::error_code ignored;
  const bool is_sqlite = fs::exists(database, ignored);
  const auto files = is_sqlite ? std::vector{database} : paradox_catalogue_store::files_in(directory_);
  if (files.empty())
    throw catalogue_exception("Cannot open catalogue " + directory_.string() +
                              ": the folder has neither catalogue.sqlite nor the Paradox table models.DB.");
  std::vector<file_state> now = state_of(files);
  if (catalogue_ && now == read_state_) return catalogue_;
  std::unique_ptr<catalogue_store> store;
  if (is_sqlite)
    store = std::make_unique<sqlite_catalogue_store>(database);
  else
    store = std::make_unique<paradox_catalogue_store>(directory_);
  catalogue_ = read_catalogue(*store);
  read_state_ = std::move(now);
  return catalogue_;
}

} // namespace vesk
