// The model catalogue as a folder of Paradox tables: models.DB and its neighbours.
#pragma once

#include "dataset/catalogue.h"

#include <filesystem>
#include <vector>

namespace vesk {

class paradox_catalogue_store : public catalogue_store {
public:
  // The tables of a folder and their memo files, .db and .mb regardless of case, in the order of their names.
  // Throws catalogue_exception when the folder cannot be read.
  static std::vector<std::filesystem::path> files_in(const std::filesystem::path& folder);

  // Throws as `files_in` does. A file is opened only when its table is read.
  explicit paradox_catalogue_store(std::filesystem::path folder);

  // Rows in the order of the primary key. Texts are UTF-8, decoded by the code page of their table.
  std::vector<catalogue_row> read(std::string_view table, const std::vector<std::string_view>& columns) override;

private:
  std::filesystem::path file_of(std::string_view table) const;

  const std::filesystem::path folder_;
  const std::vector<std::filesystem::path> files_;
};

} // namespace vesk
