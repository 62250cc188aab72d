#include "query/source_file.h"

#include "dataset/text_encoding.h"
#include "platform/file_lookup.h"

namespace vesk {

std::filesystem::path find_source_file(const std::string& name, const std::filesystem::path& data_folder) {
  std::filesystem::path found = find_file(name, data_folder);
  return found.empty() && !is_utf8(name) ? find_file(shown_text(name), data_folder) : found;
}

import_query_descriptor in_utf8(import_query_descriptor query, const std::filesystem::path& data_folder) {
  if (!is_utf8(query.file_name) && find_file(query.file_name, data_folder).empty())
    query.file_name = shown_text(query.file_name);
  for (std::string* text : {&query.name, &query.table_name, &query.date_time_field, &query.value_field})
    *text = shown_text(*text);
  for (query_condition& condition : query.conditions) {
    condition.field_name = shown_text(condition.field_name);
    condition.value_text = shown_text(condition.value_text);
  }
  return query;
}

} // namespace vesk
