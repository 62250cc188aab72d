// TImportTimeSeriesForm: defines the stored query of a series, and fills the series from it.
//
// It works on a copy of the query. Import and OK store it in the data set as one step of the history; until then, and
// after any failure, series and query are unchanged. All reading of tables runs in the background. Main thread only.
#pragma once

#include "charts/fill_calc_table.h"
#include "dataset/series_identity.h"
#include "editors/condition_grid.h"
#include "editors/editor_host.h"
#include "editors/form.h"
#include "editors/series_refresh.h"
#include "editors/shown_rows_grid.h"
#include "query/import_query.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vesk {

// A check box of the dialog and its member of the query.
struct import_option {
  const char* control;
  const char* label;
  bool import_query_descriptor::*member; // null: drill_down, which is not stored
  const char* tip = "";
};

class TImportTimeSeriesForm final : public form {
private:
  import_query working_query; // a copy of the stored one until OK
  condition_grid conditions_;
  shown_rows_grid results_;

public:
  explicit TImportTimeSeriesForm(editor_host& host);

  // Call before showing the form: the series, which must exist, and the caption of its editor.
  void begin(const series_ref& target, std::string editor_caption);

  std::string_view class_name() const override { return "TImportTimeSeriesForm"; }
  std::string caption() const override { return "Import Time Series"; }
  void FormShow() override;
  bool FormCloseQuery(bool by_ok) override; // OK stores the query
  void data_set_replaced() override;

  // Content.
  const import_query_descriptor& stored() const { return working_query.stored; }
  const std::vector<std::string>& tables() const { return working_query.tables; } // empty: the file is one table
  const std::vector<std::string>& field_names() const { return working_query.field_names; }
  // Positions in these lists; nothing if the list lacks the query's name.
  std::optional<std::size_t> table() const;
  std::optional<std::size_t> date_time_field() const;
  std::optional<std::size_t> value_field() const;
  static std::span<const import_option> options();
  bool is_on(const import_option& option) const;
  std::string sql() const;          // empty while a condition has no value
  std::string sql_hint() const;     // shown instead while it is empty
  std::string value_note() const;   // under the conditions: how much of the active row's list is shown
  std::string results_note() const; // above the results
  const std::string& series_name() const { return series_name_; }
  std::string message() const;                          // about a refused entry, else the last command
  const std::string& report() const { return report_; } // outcome of Import, for the editor

  TFillCalcTable ConditionTable{conditions_}, ResultsTable{results_};

  // Set by the window. `OnChange` follows every change of the content. `later` runs its argument after the current
  // event, since a background read must not start in the middle of an edit; if unset, the argument runs at once.
  std::function<void()> OnChange;
  std::function<void()> OnRefusal; // focuses the conditions, one of which must be corrected
  std::function<void(std::function<void()>)> later;

  // As in the editors: while an entry is refused, every command except Cancel only returns to it.
  bool nothing_is_refused();

  // Controls.
  void NameEditChange(const std::string& name);
  void BrowseButtonClick();
  bool FileNameEditChange(const std::string& name); // false: it cannot be read, and the query is unchanged
  void TableListChange(std::size_t position);
  void DateTimeFieldChange(std::size_t position);
  void ValueFieldChange(std::size_t position);
  void OptionClick(const import_option& option, bool on);
  void InsertButtonClick(); // a condition
  void DeleteButtonClick(); // the active condition
  void RunQueryButtonClick();
  bool ImportButtonClick(); // true: done, and the dialog closes as by OK
  void GraphButtonClick();
  void ResetAllButtonClick();
  void copy_results(bool with_headers); // the selected cells

private:
  // The messages about a reading that did not end.
  struct read_stops {
    std::string when_cancelled = "Cancelled. Nothing was changed.";
    std::string when_replaced = "The data set was replaced while the table was read. Repeat the command.";
  };

  // Runs work(query, data) on a copy of the working query in the background, then keeps the query and returns the
  // value. Returns nothing after Cancel and after a failure, shown under `title`; the working query is then unchanged.
  template <class Work>
  auto work_on_query(const char* title, Work work, read_stops stops);
  template <class Work>
  auto work_on_query(const char* title, Work work) {
    return work_on_query(title, std::move(work), read_stops());
  }
  bool open_source(const std::string& file_name);
  void refresh_values(std::size_t condition);
  void show_lists(); // the conditions and everything else, after a change
  void clear_results();
  void changed() const;
  void say(std::string message);
  bool has_target(); // finds the series; otherwise reports that it is gone
  // Of the series that the dialog is about; valid until the data set is next changed.
  const import_query_descriptor& stored_query() const;
  const point_list& target_points() const;
  std::string name_to_store(const std::string& file) const;
  void store(const char* label, std::optional<filling> filled = std::nullopt); // without points: stores only the query

  editor_host& host_;
  series_ref target_; // present position of `identity_`
  series_identity identity_;
  std::string editor_caption_, series_name_, message_, report_;
  bool has_results_ = false;
};

} // namespace vesk
