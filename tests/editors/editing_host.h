// Test double of the forms' host: a data set in memory, preset answers of the user, and a history of copies.
#pragma once

#include "editors/copy_series_form.h"
#include "editors/editor_host.h"
#include "editors/fill_calculate_form.h"
#include "editors/form.h"
#include "editors/import_time_series_form.h"
#include "editors/regular_times_form.h"
#include "editors/select_segments_form.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vesk {

class editing_host final : public editor_host, public user_questions {
public:
  prevesk_dataset_data_type data;
  std::vector<std::string> boxes;      // "title: text", as shown
  std::vector<std::string> merge_keys; // of all steps
  std::vector<std::string> long_works; // "Reading gauges.csv"
  std::string clipboard;
  std::optional<std::string> expression; // typed into Fill/Calc; none: cancelled
  std::vector<std::shared_ptr<TGraphForm>> graphs;
  std::function<bool(TRegularTimesForm&)> on_regular_times;
  std::function<bool(TSelectSegmentsForm&)> on_select_segments;
  std::function<bool(TCopySeriesForm&)> on_copy_series;
  std::function<void()> on_box;                          // called once, while a box is open
  std::function<bool(TImportTimeSeriesForm&)> on_import; // works in it; returns whether it closes with OK
  bool running = false;                                  // as if a restart file is being loaded
  std::filesystem::path folder;                          // of the data file
  std::optional<std::string> file;                       // answer to file dialogs
  std::string file_filter;                               // of the last file dialog
  bool replaced_while_asking = false;                    // the data set, while a file dialog is open
  box_answer answer = box_answer::ok;                    // to boxes
  std::function<void()> in_long_work;                    // called during it
  bool cancels_long_work = false;                        // at once
  std::function<void()> in_reading;                      // called often by work that reads a table
  form* open = nullptr;                                  // notified of replacements

  prevesk_dataset_data_type* data_set() override { return &data; }
  std::uint64_t generation() const override { return generation_; }
  std::filesystem::path data_folder() const override { return folder; }
  user_questions& questions() override { return *this; }
  std::string number_format(std::string_view setting) const override {
    return setting.ends_with("SimpleField") ? "E" : "#######.####";
  }
  void begin_step(const std::string& label, const std::string& merge_key) override {
    steps_.emplace_back(label, data);
    merge_keys.push_back(merge_key);
  }
  void end_step(bool completed) override {
    if (completed) return;
    data = steps_.back().second;
    steps_.pop_back();
    replace_data_set();
  }
  std::string undo_label() const override { return steps_.empty() ? "" : steps_.back().first; }
  std::string redo_label() const override { return undone_.empty() ? "" : undone_.back().first; }
  void undo() override { move(steps_, undone_); }
  void redo() override { move(undone_, steps_); }
  void forget_steps() { steps_.clear(), undone_.clear(); }
  TFillCalculateForm& fill_calculate_form() override { return fill_; }
  TImportTimeSeriesForm& import_form() override { return import_; }
  bool logging_enabled() const override { return false; }
  void set_logging_enabled(bool) override {}
  int diagnostic_level() const override { return 0; }
  void set_diagnostic_level(int) override {}
  int undo_megabytes() const override { return 0; }
  void set_undo_megabytes(int) override {}
  void start_load_restart_file() override { running = true; }
  bool restart_file_is_loading() const override { return running; }
  void cancel_job() override { running = false; }

  box_answer message_box(const std::string& title, const std::string& text, box_buttons) override {
    boxes.push_back(title + ": " + text);
    if (on_box) std::exchange(on_box, nullptr)();
    return answer;
  }
  std::optional<std::string> ask_file(const file_dialog& dialog) override {
    if (replaced_while_asking) ++generation_;
    file_filter = dialog.filter;
    return file;
  }
  std::optional<std::string> ask_folder(const std::string&, const std::string&) override { return std::nullopt; }
  bool run_long_work(const std::string& what, const std::function<void(work_progress&)>& work) override {
    struct watched_progress : unseen_progress {
      explicit watched_progress(const editing_host& its_host) : host(its_host) {}
      bool is_cancelled() const override {
        if (host.in_reading) host.in_reading();
        return false;
      }
      const editing_host& host;
    } progress(*this);
    long_works.push_back(what);
    if (in_long_work) in_long_work();
    if (!cancels_long_work) work(progress);
    return !cancels_long_work;
  }
  // For example at the end of a job.
  void replace_data(const prevesk_dataset_data_type& next) {
    data = next;
    ++generation_;
    if (open) open->data_set_replaced();
  }
  bool show_form(form& shown) override {
    if (auto* times = dynamic_cast<TRegularTimesForm*>(&shown)) return on_regular_times(*times);
    if (auto* segments = dynamic_cast<TSelectSegmentsForm*>(&shown)) {
      segments->FormShow();
      return on_select_segments(*segments);
    }
    if (auto* copies = dynamic_cast<TCopySeriesForm*>(&shown)) return on_copy_series(*copies);
    if (auto* import = dynamic_cast<TImportTimeSeriesForm*>(&shown)) {
      import->FormShow();
      return on_import(*import);
    }
    if (expression) fill_.FillCalculateEdit = *expression;
    return expression.has_value();
  }
  void show_graph(std::shared_ptr<TGraphForm> graph, const form&) override { graphs.push_back(std::move(graph)); }
  std::string clipboard_text() override { return clipboard; }
  void set_clipboard_text(const std::string& text) override { clipboard = text; }

  // What a job's end does after replacing the data set.
  void replace_data_set() {
    ++generation_;
    if (open) open->data_set_replaced();
  }

private:
  using history = std::vector<std::pair<std::string, prevesk_dataset_data_type>>;

  void move(history& from, history& to) {
    if (from.empty()) return;
    to.emplace_back(from.back().first, data);
    data = from.back().second;
    from.pop_back();
    replace_data_set();
  }

  history steps_, undone_;
  std::uint64_t generation_ = 0;
  TFillCalculateForm fill_;
  TImportTimeSeriesForm import_{*this};
};

} // namespace vesk
