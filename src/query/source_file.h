// The source of a stored query, whose texts may be in the encoding of an old data file; see text_encoding.h.
#pragma once

#include "dataset/stored_query.h"

#include <filesystem>
#include <string>

namespace vesk {

// The file of this name, as `find_file` looks for it: under the name's own bytes, else under the name in UTF-8. Empty
// if there is none.
std::filesystem::path find_source_file(const std::string& name, const std::filesystem::path& data_folder);

// The query with all texts in UTF-8, as sources give their names and values. A file name under whose own bytes there is
// a file keeps them.
import_query_descriptor in_utf8(import_query_descriptor query, const std::filesystem::path& data_folder);

} // namespace vesk
