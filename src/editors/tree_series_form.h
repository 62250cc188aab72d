// The editors of series that belong to systems and segments: a tree of systems and their records, and the series of the
// selected record. A second page has two factors per system.
#pragma once

#include "dataset/series_identity.h"
#include "editors/copy_series_form.h"
#include "editors/editor.h"
#include "editors/record_grid.h"
#include "editors/series_copies.h"

namespace vesk {

class tree_series_form : public editor, public editor_tree {
public:
  // The differences between loads and boundaries.
  struct traits {
    std::string_view class_name, caption, tree_name;
    series_kind kind;
    std::string_view value_format, factor_format;
    double system_data_type::*scale;
    double system_data_type::*conversion;
    std::string_view empty_hint;   // shown while no record is selected
    std::string_view nothing_hint; // shown while there are no records
    int root_image;                // see editor_tree
    std::string_view label_name;   // of the series
  };

  std::string_view class_name() const override { return traits_.class_name; }
  std::string caption() const override { return std::string(traits_.caption); }
  std::vector<editor_page> pages() const override {
    return {{caption(), 0, 1}, {"Scale and Conversion Factors", 1, 1}};
  }
  editor_choice* choice() override { return &InterpolationTypeComboBox; }
  void ChoiceChange(std::size_t position) override; // stored at once, as one step
  editor_tree* tree() override { return this; }

  // editor_tree
  std::string_view name() const override { return traits_.tree_name; }
  std::string_view root() const override { return traits_.caption; }
  std::size_t group_count() const override;
  std::string group_text(std::size_t system) const override;
  std::size_t item_count(std::size_t system) const override;
  std::string item_text(std::size_t system, std::size_t item) const override;
  std::string item_tip(std::size_t system, std::size_t item) const override;
  bool item_mark(std::size_t system, std::size_t item) const override;
  int image(const node& which) const override;
  const std::optional<node>& selected() const override { return selected_; }
  void select(std::optional<node> which) override;
  std::vector<menu_item> menu(const node& which) override;

  void copy_record(const series_ref& source); // to systems and segments chosen by the user

  void FormShow() override; // with nothing selected

  bool is_about_segments() const override { return true; }
  std::optional<std::size_t> segment_in_focus() const override;

  editor_choice InterpolationTypeComboBox{"InterpolationTypeComboBox", "Interpolation", {"Linear", "Step"}, 0, false};

protected:
  tree_series_form(editor_host& host, const traits& differences);

  void take_content() override;
  bool select_segment(std::size_t segment) override;
  std::string find_refusal() override;

  std::optional<series_ref> selected_record() const;
  std::int32_t segment_of(const series_ref& ref) const; // of the record; `ref` must name one
  bool is_segment(std::int32_t segment) const;          // whether it is in the network
  std::string segment_name(std::int32_t segment) const; // empty outside the network
  void records_changed();                               // of the tree; no record is selected afterwards

private:
  copy_targets chosen_targets() const;
  std::string copies_in_words(std::size_t added, std::size_t replaced) const;
  void follow_selected(); // finds the selected node in the new data set
  void show_selected();
  std::string hint() const;                           // for the empty series
  std::string full_name(const series_ref& ref) const; // "segment 5 (Halifax), Oxygen"

  const traits traits_;
  std::optional<node> selected_;
  std::optional<series_identity> identity_; // of the selected record
  std::uint32_t system_ = 0;                // the number of the selected system
  series_grid points_;
  record_grid<system_data_type> systems_;
  editor_panel& series_panel_;
  editor_panel& system_panel_;
  TCopySeriesForm copy_form_;
};

} // namespace vesk
