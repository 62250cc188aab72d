// TSegmentForm: the segments of the network, with their values of parameters and systems.
//
// The only dialog that changes the number of segments. References to segments are by number and keep that number; the
// dialog reports how many then refer to another segment.
#pragma once

#include "dataset/network.h"
#include "editors/editor.h"
#include "editors/record_grid.h"
#include "editors/segment_items.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

namespace vesk {

// One value per segment and parameter or system: a row for each segment, columns in the order of the data set's list.
class segment_value_grid final : public grid {
public:
  enum class content { parameters, initial_concentrations, fractions_dissolved };

  segment_value_grid(editor_host& host, content shown, const char* format)
      : host_(host), shown_(shown), format_(format) {}

  void take_columns(); // headers and pictures

  std::span<const grid_column> columns() const override { return columns_; }
  std::size_t row_count() const override;
  cell_value value(std::size_t row, std::size_t column) const override;
  void set_value(std::size_t row, std::size_t column, const cell_value& value) override;
  cell_mark mark(std::size_t row, std::size_t column) const override;
  std::string tool_tip(std::size_t row, std::size_t column) const override;
  std::optional<cell_value> default_value(std::size_t row, std::size_t column) const override;

private:
  const parameter_data_type* parameter(std::size_t column) const; // null on the pages of systems
  editor_host& host_;
  content shown_;
  const char* format_;
  std::vector<grid_column> columns_;
};

// The segments themselves. Records where rows were inserted or erased.
class segment_list_grid final : public record_grid<segment_data_type> {
public:
  explicit segment_list_grid(record_grid<segment_data_type> content) : record_grid(std::move(content)) {}

  void insert_row(std::size_t row) override {
    come = {row, row + 1};
    record_grid::insert_row(row);
  }
  void erase_rows(std::size_t first, std::size_t count) override {
    come = {first, first};
    record_grid::erase_rows(first, count);
  }
  void resize(std::size_t count) override {
    come = {std::min(count, row_count()), count};
    record_grid::resize(count);
  }
  void expect(const coming_rows* rows) override {
    if (bottoms) bottoms->expect(rows);
  }

  std::shared_ptr<segment_items> bottoms; // the items of the bottom segments, which are these rows
  segment_range come;                     // what the last of these brought; segments before it have kept their numbers
};

class TSegmentForm final : public editor {
public:
  explicit TSegmentForm(editor_host& host);

  std::string_view class_name() const override { return "TSegmentForm"; }
  std::string caption() const override { return "Segments"; }

  std::vector<editor_page> pages() const override;
  std::vector<editor_command> common_commands() override;
  std::vector<entry_field*> fields() override { return {&VolumeScaleFactorField, &VolumeConversionFactorField}; }

  entry_field VolumeScaleFactorField, VolumeConversionFactorField;

  bool is_about_segments() const override { return true; }
  std::optional<std::size_t> segment_in_focus() const override;

  void grid_entered(std::size_t page) override { page_ = page; }

  // For any page: they act on the first page's active row, the last one on all selected rows of the page in use.
  void InsertButtonClick();
  void DeleteButtonClick();
  void insert_and_renumber_click();
  void delete_and_renumber_click();

  void FormShow() override;
  bool FormCloseQuery(bool by_ok) override;
  void data_set_replaced() override;

protected:
  void take_content() override;
  void accepted() override;
  bool select_segment(std::size_t segment) override;

private:
  std::vector<record_column<segment_data_type>> columns();
  void segment_types_fill();
  // Sets references past the end to the last segment; returns how many.
  std::size_t bottom_segment_refresh();
  void rows_changed(); // the number of segments; brings the records and the grids into line
  void segment_grids_refresh();
  void value_pages_refresh();
  std::string what_references_now_name() const;
  void change_network(const std::string& label, const std::function<void(prevesk_dataset_data_type&)>& work);
  void load_factors();

  // The combo of types shows positions, the records store the catalogue's identifiers.
  std::unordered_map<std::uint32_t, std::size_t> type_id_to_item;
  std::vector<std::uint32_t> item_to_type_id;
  std::size_t page_ = 0;           // that was entered last
  std::size_t segment_count_ = 0;  // before the current change
  bool records_are_whole_ = false; // each segment has one record for each parameter and system
  std::shared_ptr<segment_items> BottomSegmentComboBoxField;
  segment_list_grid segments_;
  segment_value_grid parameters_, concentrations_, fractions_;
  std::array<editor_panel*, 4> panels_of_pages_;
};

} // namespace vesk
