#include "query/paradox_catalogue_store.h"

#include "query/sources/databases/paradox_source.h"

#include <algorithm>

namespace vesk {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(std::string_view table, const fs::path& place, const std::string& cause) {
  throw catalogue_exception("Cannot read table " + std::string(table) + " of catalogue " + place.string() + ": " +
                            cause);
}

catalogue_value value_of(const table_value& value) {
  switch (value.kind()) {
  case value_kind::null: return {};
  case value_kind::integer: return value.integer();
  case value_kind::text: return std::string(value.text());
  default: return value.number();
  }
}

bool is_one_of(const fs::path& file, std::initializer_list<std::string_view> extensions) {
  const std::string own = file.extension().string();
  return std::any_of(extensions.begin(), extensions.end(),
                     [&](std::string_view extension) { return equal_ignoring_case(own, extension); });
}

} // namespace

std::vector<fs::path> paradox_catalogue_store::files_in(const fs::path& folder) {
  std::vector<fs::path> found;
  try {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
      if (is_one_of(entry.path(), {".db", ".mb"}) && entry.is_regular_file()) found.push_back(entry.path());
  } catch (const fs::filesystem_error& error) {
    throw catalogue_exception("Cannot open catalogue " + folder.string() + ": " + error.code().message() + ".");
  }
  std::sort(found.begin(), found.end());
  return found;
}

paradox_catalogue_store::paradox_catalogue_store(fs::path folder)
    : folder_(std::move(folder)), files_(files_in(folder_)) {}

fs::path paradox_catalogue_store::file_of(std::string_view table) const {
  const auto is_table = [&](const fs::path& file) {
    return equal_ignoring_case(file.stem().string(), table) && is_one_of(file, {".db"});
  };
  const auto found = std::find_if(files_.begin(), files_.end(), is_table);
  if (found == files_.end()) fail(table, folder_, "there is no file " + std::string(table) + ".DB.");
  const auto other = std::find_if(found + 1, files_.end(), is_table);
  if (other != files_.end())
    fail(table, folder_,
         "the folder has two such files, " + found->filename().string() + " and " + other->filename().string() + ".");
  return *found;
}

std::vector<catalogue_row> paradox_catalogue_store::read(std::string_view table,
                                                         const std::vector<std::string_view>& columns) {
  const fs::path file = file_of(table);
  try {
    const auto source = open_paradox(file);
    const std::vector<table_field>& fields = source->fields(0);
    std::vector<std::size_t> positions;
    for (const std::string_view column : columns) {
      const auto found = std::find_if(fields.begin(), fields.end(), [&](const table_field& field) {
        return equal_ignoring_case(field.name, column);
      });
      if (found == fields.end()) fail(table, file, "the table has no column " + std::string(column) + ".");
      positions.push_back(static_cast<std::size_t>(found - fields.begin()));
    }
    std::vector<catalogue_row> rows;
    for (const auto cursor = source->rows(0); cursor->next();) {
      catalogue_row& row = rows.emplace_back();
      for (const std::size_t position : positions) row.push_back(value_of(cursor->value(position)));
    }
    return rows;
  } catch (const table_source_exception& error) {
    fail(table, file, error.cause());
  }
}

} // namespace vesk
