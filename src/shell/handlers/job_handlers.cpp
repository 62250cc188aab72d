#include "shell/handlers/special_handlers.h"
#include "shell/handlers/values.h"

#include <cstring>
#include <string>
#include <vector>

namespace vesk::handlers {

namespace {

// The text in a slot of `width` bytes, which need not be terminated. If `width` is 0 the slot is not read.
std::string label_text(const char* slot, std::size_t width) {
  if (width == 0) return {};
  return {slot, strnlen(slot, width)};
}

} // namespace

void import(shell_interface& shell, std::int32_t& import) {
  import = shell.job().is_import() ? 1 : 0;
}

void file_name(shell_interface& shell, char* filename) {
  if (shell.is_get) return to_argument(shell, shell.job().input_file_name(), filename);
  shell.job().set_file_name(filename);
}

void set_days(shell_interface& shell, float& days) {
  shell.bulk.update(shell.job(), days);
}

void status_information(shell_interface& shell, char* information) {
  shell.job().add_info_line(information, 0);
}

void icon_status_information(shell_interface& shell, std::int32_t& icon_index, char* information) {
  shell.job().add_info_line(information, icon_index);
}

void clear_status_information(shell_interface& shell) {
  shell.job().clear_info_lines();
}

void status_progress(shell_interface& shell, std::int32_t& percent) {
  shell.job().set_progress(percent);
}

void indicate_status(shell_interface& shell, char* description, std::int32_t& status) {
  shell.job().set_status(description, status);
}

void initialize_grid(shell_interface& shell, char* column_labels, std::int32_t& label_string_size,
                     std::int32_t& num_columns, std::int32_t& num_rows) {
  const auto width = shell.list_size(label_string_size, 1, widest_label);
  const auto columns = shell.list_size(num_columns, 2, most_grid_columns);
  if (!width || !columns || !shell.list_size(num_rows, 3)) return;
  std::vector<std::string> labels;
  for (std::size_t i = 0; i < *columns; ++i) labels.push_back(label_text(column_labels + i * *width, *width));
  shell.job().initialize_grid(std::move(labels), num_rows);
}

void grid_data(shell_interface& shell, float* data_array, std::int32_t& actual_columns, std::int32_t& actual_rows,
               std::int32_t& should_invert) {
  if (!shell.list_size(actual_columns, 1) || !shell.list_size(actual_rows, 2)) return;
  shell.job().set_grid_data(data_array, actual_columns, actual_rows, should_invert != 0);
}

void grid_update(shell_interface& shell) {
  shell.job().mark_grid_changed();
}

void grid_stop(shell_interface& shell) {
  shell.job().clear_grid_data();
}

void cancel(shell_interface& shell, std::int32_t& cancel_flag) {
  cancel_flag = shell.job().cancel_requested() ? 1 : 0;
}

void debug(shell_interface& shell, std::int32_t& debug_flag) {
  if (shell.is_get)
    debug_flag = shell.job().diagnostic_level();
  else
    shell.job().set_diagnostic_level(debug_flag);
}

void window_handle(shell_interface& shell, std::int32_t& handle) {
  handle = shell.job().window_handle();
}

void elapsed(shell_interface& shell, std::int32_t& elapsed) {
  elapsed = shell.job().elapsed_seconds();
}

void return_code(shell_interface& shell, std::int32_t& code) {
  shell.job().set_return_code(code);
}

} // namespace vesk::handlers
