// Handlers for keywords with special behaviour. Arguments are named as in the table.
#pragma once

#include "shell/shell_interface.h"

namespace vesk::handlers {

// The data set as a whole (data_set_handlers.cpp).
void mass_balance_system(shell_interface& shell, std::int32_t& jmass); // PUT counts from index_base, GET from 0
void hydrodynamic_file(shell_interface& shell, char* hydrofile);
void number_of_constants(shell_interface& shell, std::int32_t& numconst);
void number_of_segments(shell_interface& shell, std::int32_t& numseg);
void number_of_exchange_fields(shell_interface& shell, std::int32_t& nrfld); // GET: those switched on
void number_of_flow_fields(shell_interface& shell, std::int32_t& nfield);    // GET: all
void constant_group_description(shell_interface& shell, std::int32_t& constant_index, char* description);
void num_segment_parameters(shell_interface& shell, std::int32_t& segment_index, std::int32_t& nopam);
void seg_param_isc(shell_interface& shell, std::int32_t& segment_index, std::int32_t& parameter_index,
                   std::int32_t& iscparam);
void seg_param_value(shell_interface& shell, std::int32_t& segment_index, std::int32_t& number, float& constparam);
void global_system_bypass(shell_interface& shell, std::int32_t& system_index, std::int32_t& gsysbypass);
void initial_concentration(shell_interface& shell, std::int32_t& system_index, std::int32_t& segment_index,
                           float& initc);
void fraction_dissolved(shell_interface& shell, std::int32_t& system_index, std::int32_t& segment_index, float& fdiss);
void find_boundaries(shell_interface& shell);
void csv_output_file_name(shell_interface& shell, std::int32_t& number,
                          char* csv_file_name); // GET by position, PUT by ISC number
void project_file(shell_interface& shell, std::int32_t& index, char* filename);
void model_type(shell_interface& shell, std::int32_t& model_type);

// Dates and times (date_handlers.cpp).
void seed_date(shell_interface& shell, std::int32_t& month, std::int32_t& day, std::int32_t& year);
void seed_time(shell_interface& shell, std::int32_t& hour, std::int32_t& minute, std::int32_t& second);
void hydro_skip_date(shell_interface& shell, std::int32_t& month, std::int32_t& day, std::int32_t& year);
void hydro_skip_time(shell_interface& shell, std::int32_t& hour, std::int32_t& minute, std::int32_t& second);
void hydro_skip_julian(shell_interface& shell, float& days);
void end_julian(shell_interface& shell, float& days);

// The job and the front end (job_handlers.cpp).
void import(shell_interface& shell, std::int32_t& import);
void file_name(shell_interface& shell, char* filename);
void set_days(shell_interface& shell, float& days);
void status_information(shell_interface& shell, char* information);
void icon_status_information(shell_interface& shell, std::int32_t& icon_index, char* information);
void clear_status_information(shell_interface& shell);
void status_progress(shell_interface& shell, std::int32_t& percent);
void indicate_status(shell_interface& shell, char* description, std::int32_t& status);
// More than any window shows; garbage numbers would make us read far beyond the engine's labels.
inline constexpr std::int32_t most_grid_columns = 100'000, widest_label = 4096;
void initialize_grid(shell_interface& shell, char* column_labels, std::int32_t& label_string_size,
                     std::int32_t& num_columns, std::int32_t& num_rows);
void grid_data(shell_interface& shell, float* data_array, std::int32_t& actual_columns, std::int32_t& actual_rows,
               std::int32_t& should_invert);
void grid_update(shell_interface& shell);
void grid_stop(shell_interface& shell);
void cancel(shell_interface& shell, std::int32_t& cancel_flag);
void debug(shell_interface& shell, std::int32_t& debug_flag);
void window_handle(shell_interface& shell, std::int32_t& handle);
void elapsed(shell_interface& shell, std::int32_t& elapsed);
void return_code(shell_interface& shell, std::int32_t& code);

// Formatted texts (format_handlers.cpp).
void sprintf_i(shell_interface& shell, char* output, char* format, std::int32_t& integer1);
void sprintf_r(shell_interface& shell, char* output, char* format, float& real1);
void sprintf_ii(shell_interface& shell, char* output, char* format, std::int32_t& integer1, std::int32_t& integer2);
void sprintf_rr(shell_interface& shell, char* output, char* format, float& real1, float& real2);
void sprintf_ir(shell_interface& shell, char* output, char* format, std::int32_t& integer1, float& real1);
void sprintf_ri(shell_interface& shell, char* output, char* format, float& real1, std::int32_t& integer1);

} // namespace vesk::handlers
