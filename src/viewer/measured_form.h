// The entries that describe a measured series, and the host of the query dialog that selects its table.
#pragma once

#include "editors/editor_host.h"
#include "editors/import_time_series_form.h"
#include "results/measured_series.h"

#include <filesystem>
#include <string>

namespace vesk {

// The host of an import dialog for a query outside any data set: owns a data set with one series.
class query_host final : public editor_host {
public:
  query_host(user_questions& questions, std::filesystem::path folder);

  // The query of that series.
  import_query_descriptor query() const;
  void set_query(const import_query_descriptor& query);
  void set_name(const std::string& name) { data_.time_functions.edit(0).description = name; } // shown in the dialog
  series_ref series() const { return {series_kind::time_function, 0, 0}; }

  prevesk_dataset_data_type* data_set() override { return &data_; }
  std::uint64_t generation() const override { return 0; }
  std::filesystem::path data_folder() const override { return folder_; }
  user_questions& questions() override { return questions_; }
  std::string number_format(std::string_view) const override { return "E"; }
  void begin_step(const std::string&, const std::string&) override {}
  void end_step(bool) override {}
  std::string undo_label() const override { return {}; }
  std::string redo_label() const override { return {}; }
  void undo() override {}
  void redo() override {}
  TFillCalculateForm& fill_calculate_form() override;
  TImportTimeSeriesForm& import_form() override { return import_; }
  bool logging_enabled() const override { return false; }
  void set_logging_enabled(bool) override {}
  int diagnostic_level() const override { return 0; }
  void set_diagnostic_level(int) override {}
  int undo_megabytes() const override { return 0; }
  void set_undo_megabytes(int) override {}
  void start_load_restart_file() override {}
  bool restart_file_is_loading() const override { return false; }
  void cancel_job() override {}

private:
  user_questions& questions_;
  const std::filesystem::path folder_;
  prevesk_dataset_data_type data_;
  TImportTimeSeriesForm import_{*this};
};

// The entries as typed.
struct measured_form {
  std::string name, variable, segment, units, factor, gap, from, to;
  std::size_t kind = 0; // position in measured_kind
  std::size_t way = 0;  // position in pairing_way
  import_query_descriptor query = {};

  static measured_form of(const measured_series& series);

  // What is wrong with the entries: one sentence; empty: nothing.
  std::string message() const;
  measured_series series() const; // call only if message() is empty

  // "data/oak_city.csv, field oxygen"; "no table yet".
  std::string table_text() const;
};

inline constexpr const char* measured_kind_texts[] = {"values at their times", "daily means", "monthly means"};
inline constexpr const char* pairing_way_texts[] = {"on the line between two print times", "at the nearest print time"};

} // namespace vesk
