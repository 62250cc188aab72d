// The model catalogue in a SQLite file, `catalogue.sqlite`.
#pragma once

#include "dataset/catalogue.h"

#include <filesystem>
#include <memory>

struct sqlite3;

namespace vesk {

class sqlite_catalogue_store : public catalogue_store {
public:
  // Opens the file read-only. Throws catalogue_exception when it is not there or may not be read. That it is no SQLite
  // database shows only at the first `read`.
  explicit sqlite_catalogue_store(const std::filesystem::path& file);
  ~sqlite_catalogue_store() override;

  // Rows in the order of their rowid, or of the primary key in a table without one.
  std::vector<catalogue_row> read(std::string_view table, const std::vector<std::string_view>& columns) override;

private:
  [[noreturn]] void fail(std::string_view table) const;

  std::filesystem::path file_;
  sqlite3* database_ = nullptr;
};

} // namespace vesk
