// Many runs in one call.
#include "app/failure_kinds.h"
#include "console/interrupts.h"
#include "console/session.h"
#include "console/supervised_run.h"
#include "console/supervisor.h"
#include "console/value_setting.h"
#include "engine/engine_watch.h"

namespace vesk {

run_table read_run_table(const console_options& options, const prevesk_dataset_data_type& data) {
  std::optional<csv_table> parameters;
  if (options.parameters) parameters = read_csv_table(*options.parameters);
  return run_table(read_csv_table(*options.set_from), parameters ? &*parameters : nullptr, data);
}

// The children find data set, catalogue, points of queries and engine as they are here, and the hashes of the files.
bool session::prepare_rows() {
  set_up();
  if (!catalogue_is_there() || open_files() != step::done || !has_data("run")) return false;
  table_ = read_run_table(options_, *form_.current_data_set);
  std::vector<series_ref> set_from_files = table_->series_from_files(*form_.current_data_set);
  for (const std::string& text : options_.set) {
    const value_assignment it = parse_assignment(*form_.current_data_set, text);
    if (it.names_a_file()) set_from_files.push_back(it.ref.row->series(it.ref.at));
  }
  choose_results();
  before_queries_ = *form_.current_data_set;
  if (!form_.skip_deferred_queries && !fill_other_series(form_, set_from_files)) return false;
  return form_.prepare_many_runs();
}

int session::run_rows(const std::function<std::optional<std::size_t>()>& next_row) {
  bool ready = false, any = false;
  int first = 0;
  try {
    ready = prepare_rows();
    if (!ready) return end(step::failed);
    const std::string folder = *options_.output_dir;
    while (const auto row = next_row()) {
      any = true;
      const int status = row_is_in_table(*row) ? run_row(*row, folder) : vesk::status_of(failure_kind::usage);
      if (first == 0) first = status;
      if (supervision_was_interrupted()) break;
    }
    if (!any) ui_.say("Standard input gave no numbers of rows, so nothing was run.");
    return first;
  } catch (const std::exception& error) {
    ui_.set_row("");
    fail(error.what(), kind_of_failure(error));
    if (!ready) return end(step::failed);
    return first != 0 ? first : reported_status_of(step::failed);
  }
}

// Only numbers from standard input may be wrong: others have been checked.
bool session::row_is_in_table(std::size_t row) {
  try {
    table_->require(row, "standard input asks for " + std::to_string(row));
    return true;
  } catch (const value_error& error) {
    ui_.set_row("");
    ui_.say_failure(error.what());
    return false;
  }
}

int session::run_row(std::size_t row, const std::filesystem::path& folder) {
  options_.output_dir = (folder / table_->folder(row)).native();
  form_.record_head.row = static_cast<std::int64_t>(row);
  form_.record_head.started = utc_now();
  row_ = row;
  ui_.set_row("row " + std::to_string(row));
  return run_supervised(options_, ui_, form_.record_head,
                        [&](const record_taker& take_record) { return work_on_row(take_record); });
}

// In the child.
int session::work_on_row(const record_taker& take_record) {
  watch_interrupts();
  report_engine_crashes("vesk-run");
  take_record_ = take_record;
  step result = step::failed;
  try {
    make_output_folder();
    result = set_values();
    if (result == step::done) result = run_model();
  } catch (const std::exception& error) {
    if (form_.active_thread) throw;
    result = fail(error.what(), kind_of_failure(error));
  }
  return end(result);
}

} // namespace vesk
