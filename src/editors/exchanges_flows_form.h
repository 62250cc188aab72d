// TExchangesFlowsForm: the exchange or flow fields, their functions, and the pairs and series of each function.
//
// One dialog with two modes; four grids from master to detail, and one row of buttons that acts on the active grid.
#pragma once

#include "dataset/series_identity.h"
#include "editors/editor.h"
#include "editors/record_grid.h"
#include "editors/segment_items.h"

#include <initializer_list>

namespace vesk {

class TExchangesFlowsForm final : public editor {
public:
  explicit TExchangesFlowsForm(editor_host& host);

  bool exchange_mode = true; // else flows; set before the form is shown

  std::string_view class_name() const override { return "TExchangesFlowsForm"; }
  std::string caption() const override { return exchange_mode ? "Exchanges" : "Flows"; }

  enum : std::size_t { field_grid, function_grid, pair_grid, series_grid_position };
  std::optional<std::size_t> active_grid() const override { return active_grid_; }
  void grid_entered(std::size_t position) override;

  void FormShow() override; // selects the first function
  bool FormCloseQuery(bool by_ok) override;
  bool is_about_segments() const override { return true; }
  std::optional<std::size_t> segment_in_focus() const override; // the first of the active pair

protected:
  void take_content() override;
  bool select_segment(std::size_t segment) override;
  std::string find_refusal() override;

private:
  // The grids over one of the two record trees, which have the same shape.
  template <class Field, class Function, class Pair>
  struct tree_grids {
    shared_list<Field> prevesk_dataset_data_type::*fields_of;
    record_grid<Field> fields;
    record_grid<Function> functions;
    record_grid<Pair, shared_array<Pair>> pairs;
  };
  using exchange_grids = tree_grids<exchange_field_data_type, exchange_function_data_type, exchange_pair_record_type>;
  using flow_grids = tree_grids<flow_field_data_type, flow_function_data_type, flow_pair_record_type>;

  template <class Grids>
  Grids make_grids(decltype(Grids::fields_of) fields_of, const char* new_function,
                   std::vector<record_column<typename decltype(Grids::pairs)::record_type>> pair_columns);
  // Calls `visit` with the grids of the current mode.
  template <class Visit>
  auto with_grids(const Visit& visit) {
    return exchange_mode ? visit(exchanges_) : visit(flows_);
  }

  void follow_function(); // the shown one, into a data set that has come in place of the last
  void enter_field();
  void enter_function();
  void show_functions(); // from the first one after a change of field
  enum class details { from_their_first_row, as_they_are };
  // A change of function always shows them from the first row.
  void show_details(details position = details::from_their_first_row);
  bool note_function(); // the active one becomes the shown one; true: it was another
  bool stays_at(editor_panel& master, std::size_t row, std::initializer_list<editor_panel*> its_details);
  bool has_field() const;                      // whether a field is active
  std::string description_of_field() const;    // of the active one; empty without one
  std::string description_of_function() const; // of the active one; empty without one
  std::optional<series_ref> active_series() const;

  std::shared_ptr<segment_items> segments_;
  exchange_grids exchanges_;
  flow_grids flows_;
  series_grid points_;
  std::size_t active_grid_ = field_grid;
  std::optional<std::size_t> shown_field_; // nothing: before the form is shown
  std::optional<series_identity> shown_function_;
  std::size_t shown_count_ = 0; // of functions in its field
  bool is_following_ = false;   // the grids go to a function without its details
  editor_panel& field_panel_;
  editor_panel& function_panel_;
  editor_panel& pair_panel_;
  editor_panel& series_panel_;
};

} // namespace vesk
