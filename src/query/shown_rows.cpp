#include "query/shown_rows.h"

#include "dataset/text_encoding.h"

namespace vesk {

namespace {

constexpr std::size_t longest_cell = 1000;                 // bytes
constexpr std::size_t most_memory = std::size_t{64} << 20; // of the cells, in bytes

std::string cell_of(const result_set& rows, std::size_t field) {
  std::string text = rows.text(field);
  if (text.size() > longest_cell) text = text.substr(0, whole_characters(text, longest_cell)) + "…";
  return text;
}

} // namespace

shown_rows read_shown_rows(import_query& query, const prevesk_dataset_data_type& data) {
  shown_rows shown;
  auto rows = query.open_rows(data, {.most_rows = most_listed});
  for (const table_field& field : rows->fields()) shown.fields.push_back(field.name);
  bool has_all = false;
  for (std::size_t memory = 0; memory < most_memory; ++shown.total) {
    has_all = !rows->next();
    if (has_all) break;
    for (std::size_t field = 0; field < shown.fields.size(); ++field) {
      shown.cells.push_back(cell_of(*rows, field));
      memory += sizeof(std::string) + shown.cells.back().size();
    }
  }
  if (!has_all ||
      shown.total == most_listed) { // sorting all rows of a large table takes longer than passing over it twice
    rows = query.open_rows(data, {.columns = {shown.fields.front()}, .in_any_order = true});
    for (shown.total = 0; rows->next();) ++shown.total;
  }
  rows.reset();
  query.engine.disconnect(query);
  return shown;
}

} // namespace vesk
