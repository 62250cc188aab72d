#include "editors/exchanges_flows_form.h"

#include "dataset/findings.h"
#include "dataset/text_encoding.h"

#include <algorithm>
#include <utility>

namespace vesk {

namespace {

constexpr const char* factor_format = "ExchangeFlowFieldNumericField";
constexpr const char* pair_format = "ExchangeFlowPairNumericField";
enum : std::size_t { used_column = 1 }; // of a field
constexpr unsigned row_buttons = insert_button | delete_button | delete_all_button;

template <class Field>
std::vector<record_column<Field>> field_columns() {
  return {
      {.header = "Field", .type = text_cell(), .field = &Field::description},
      {.header = "Used", .type = check_cell(), .field = &Field::used},
      {.header = "Scale", .type = number_cell({}), .field = &Field::scale, .format = factor_format},
      {.header = "Conversion", .type = number_cell({}), .field = &Field::conversion, .format = factor_format},
  };
}

template <class Function>
std::vector<record_column<Function>> function_columns() {
  return {
      {.header = "Function", .type = text_cell(), .field = &Function::description},
      {.header = "Interpolation", .type = combo_cell({"Linear", "Step"}, 1), .field = &Function::interpolation_type},
  };
}

template <class Pair>
record_column<Pair> segment_column(const std::string& header, const std::shared_ptr<segment_items>& items,
                                   std::int32_t Pair::*reference) {
  return {.header = header,
          .type = {.kind = cell_kind::combo, .items = items},
          .field = translated_member<Pair>{
              [items, reference](const Pair& pair) { return items->item_of_reference(pair.*reference); },
              [items, reference](Pair& pair, double item) { pair.*reference = items->reference_of_item(item); }}};
}

template <class Pair>
record_column<Pair> number_column(const std::string& header, double Pair::*member, const std::string& tip) {
  return {.header = header, .type = number_cell({}), .field = member, .format = pair_format, .tool_tip = tip};
}

std::vector<record_column<exchange_pair_record_type>> exchange_columns(const std::shared_ptr<segment_items>& items) {
  using pair = exchange_pair_record_type;
  return {segment_column("Segment one", items, &pair::segment_one),
          segment_column("Segment two", items, &pair::segment_two), number_column("Area", &pair::area, "m2"),
          number_column("Distance", &pair::length, "m")};
}

std::vector<record_column<flow_pair_record_type>> flow_columns(const std::shared_ptr<segment_items>& items) {
  using pair = flow_pair_record_type;
  return {segment_column("From", items, &pair::from_segment), segment_column("To", items, &pair::to_segment),
          number_column("Frac. of flow", &pair::fraction, "The share of the function's flow that this pair carries.")};
}

std::int32_t end_of(const exchange_pair_record_type& pair, std::size_t column) {
  return column == 0 ? pair.segment_one : pair.segment_two;
}
std::int32_t end_of(const flow_pair_record_type& pair, std::size_t column) {
  return column == 0 ? pair.from_segment : pair.to_segment;
}

std::string with_names(const std::string& text, const std::string& field, const std::string& function) {
  return text + " for " + field + ", " + function;
}

} // namespace

template <class Grids>
Grids TExchangesFlowsForm::make_grids(
    decltype(Grids::fields_of) fields_of, const char* new_function,
    std::vector<record_column<typename decltype(Grids::pairs)::record_type>> pair_columns) {
  using field_type = typename decltype(Grids::fields)::record_type;
  using function_type = typename decltype(Grids::functions)::record_type;
  using pair_type = typename decltype(Grids::pairs)::record_type;
  const auto functions = [this, fields_of]() -> const shared_list<function_type>* {
    const prevesk_dataset_data_type* data = this->host().data_set();
    const std::size_t row = field_panel_.table.active_row();
    return data && row < (data->*fields_of).size() ? &(data->*fields_of)[row].functions : nullptr;
  };
  const auto edit_functions = [this, fields_of] {
    return &(this->host().data_set()->*fields_of).edit(field_panel_.table.active_row()).functions;
  };
  const auto pairs = [this, functions]() -> const shared_array<pair_type>* {
    const auto* list = functions();
    const std::size_t row = function_panel_.table.active_row();
    return list && row < list->size() ? &(*list)[row].pairs : nullptr;
  };
  Grids grids{fields_of,
              data_set_grid(host(), fields_of, field_columns<field_type>()),
              {function_columns<function_type>(), functions, edit_functions},
              {std::move(pair_columns), pairs,
               [this, edit_functions] { return &edit_functions()->edit(function_panel_.table.active_row()).pairs; }}};
  grids.fields.mark_of = [](const field_type& field, std::size_t column) -> cell_mark {
    return {column == used_column ? field_finding(field) : std::string()};
  };
  grids.functions.make_appended = [new_function] {
    function_type function;
    function.description = new_function;
    return function;
  };
  // The button adds a function with the two points of a run; Down or a paste adds one without points.
  grids.functions.make_inserted = [this, make = grids.functions.make_appended] {
    function_type function = make();
    this->host().data_set()->ensure_default_points(function.points);
    return function;
  };
  grids.functions.mark_of = [this](const function_type& function, std::size_t column) -> cell_mark {
    return {column == 0 && this->host().data_set() ? source_age(function) : std::string()};
  };
  grids.pairs.make_inserted = grids.pairs.make_appended = [] { return pair_type{}; };
  grids.pairs.mark_of = [this](const pair_type& pair, std::size_t column) -> cell_mark {
    const prevesk_dataset_data_type* data = this->host().data_set();
    return {column > 1 || !data
                ? std::string()
                : pair_end_finding(end_of(pair, column), end_of(pair, 1 - column), data->segments.size())};
  };
  return grids;
}

TExchangesFlowsForm::TExchangesFlowsForm(editor_host& host)
    : editor(host), segments_(std::make_shared<segment_items>(host, "Boundary")),
      exchanges_(make_grids<exchange_grids>(&prevesk_dataset_data_type::exchange_fields, "Exchange Function",
                                            exchange_columns(segments_))),
      flows_(make_grids<flow_grids>(&prevesk_dataset_data_type::flow_fields, "Flow Function", flow_columns(segments_))),
      points_(host, "ExchangeFlowTimeFunctionValueSimpleField"),
      field_panel_(add_panel("FieldFillCalcTable", exchanges_.fields, block_buttons)),
      function_panel_(
          add_panel("FunctionFillCalcTable", exchanges_.functions, row_buttons | copy_button | paste_button)),
      pair_panel_(add_panel("PairsFillCalcTable", exchanges_.pairs, row_buttons | block_buttons)),
      series_panel_(add_panel("TimeFunctionFillCalcTable", points_, series_buttons, &points_)) {
  function_panel_.empty_hint = "No functions: choose Insert for the first one.";
  field_panel_.table.OnEnteringRow = [this](std::size_t) { enter_field(); };
  field_panel_.table.OnDoneEdit = [this](std::size_t) { note_function(); }; // its field may have another name
  function_panel_.table.OnEnteringRow = [this](std::size_t) { enter_function(); };
  function_panel_.table.OnDoneEdit = [this](std::size_t) {
    note_function(); // the same one, by its new name
    show_details(details::as_they_are);
  };
  function_panel_.table.OnRowsChanged = [this] {
    show_details();
    field_panel_.table.invalidate_row(field_panel_.table.active_row()); // its mark
  };
  pair_panel_.table.OnRowsChanged = [this] { field_panel_.table.invalidate_row(field_panel_.table.active_row()); };
}

void TExchangesFlowsForm::grid_entered(std::size_t position) {
  if (active_grid_ == position) return;
  active_grid_ = position;
  refresh_texts();
}

void TExchangesFlowsForm::FormShow() {
  shown_field_.reset();
  shown_function_.reset();
  editor::FormShow();
}

bool TExchangesFlowsForm::FormCloseQuery(bool by_ok) {
  const bool closes = editor::FormCloseQuery(by_ok);
  if (closes) segments_->forget();
  return closes;
}

void TExchangesFlowsForm::take_content() {
  segments_->forget();
  with_grids([this](auto& grids) {
    grids.fields.take_formats(host());
    grids.pairs.take_formats(host());
    field_panel_.table.show(grids.fields);
  });
  points_.take_format();
  field_panel_.label = exchange_mode ? "Exchange Fields" : "Flow Fields";
  pair_panel_.label = exchange_mode ? "Exchange Function Pairs" : "Flow Function Pairs";
  series_panel_.label = "Time/value pairs";
  follow_function();
  show_functions();
}

// Undo or a job may have put another one at its position. The details then stay as they are, and so does the block that
// is selected in them.
void TExchangesFlowsForm::follow_function() {
  const prevesk_dataset_data_type* data = host().data_set();
  const auto found = data && shown_function_ ? find_series(*data, *shown_function_) : std::nullopt;
  if (!found) {
    // Undo of an entry has only changed its name, or that of its field.
    const std::optional<series_ref> series = active_series();
    if (is_in_history() && shown_function_ && series && series == points_.ref() &&
        series_count(*data, series->kind, series->owner) == shown_count_)
      note_function();
    return;
  }
  const auto go_to = [](editor_panel& panel, std::size_t row) {
    panel.table.set_active(row, panel.table.active_column());
  };
  is_following_ = true;
  go_to(field_panel_, found->owner);
  with_grids([this](auto& grids) { function_panel_.table.show(grids.functions); });
  go_to(function_panel_, found->index);
  is_following_ = false;
  shown_field_ = found->owner;
}

// Whether a detail has a refused entry, which must not be replaced by other rows; then returns the master to `row`.
bool TExchangesFlowsForm::stays_at(editor_panel& master, std::size_t row,
                                   std::initializer_list<editor_panel*> its_details) {
  if (std::ranges::none_of(its_details, [](const editor_panel* one) { return one->table.refused().has_value(); }))
    return false;
  if (master.table.active_row() == row) return true;
  master.table.set_active(row, master.table.active_column());
  may_go_on();
  return true;
}

void TExchangesFlowsForm::enter_field() {
  if (is_following_) return;
  if (!stays_at(field_panel_, shown_field_.value_or(0), {&function_panel_, &pair_panel_, &series_panel_}))
    show_functions();
}

void TExchangesFlowsForm::enter_function() {
  if (is_following_) return;
  if (!stays_at(function_panel_, points_.ref() ? points_.ref()->index : 0, {&pair_panel_, &series_panel_}))
    show_details();
}

void TExchangesFlowsForm::show_functions() {
  const std::size_t row = field_panel_.table.active_row();
  const bool another = shown_field_ != row;
  shown_field_ = row;
  function_panel_.label = has_field() ? description_of_field() + " functions" : "Functions";
  if (another) function_panel_.table.set_selection(std::nullopt);
  with_grids([this](auto& grids) { function_panel_.table.show(grids.functions); });
  if (another && function_panel_.table.active_row() != 0)
    function_panel_.table.set_active(0, function_panel_.table.active_column()); // this shows the details
  else
    show_details(another ? details::from_their_first_row : details::as_they_are);
}

void TExchangesFlowsForm::show_details(details position) {
  const std::optional<series_ref> series = active_series();
  if (note_function()) position = details::from_their_first_row;
  points_.set_series(series);
  if (position == details::from_their_first_row)
    for (editor_panel* detail : {&pair_panel_, &series_panel_}) {
      detail->table.set_selection(std::nullopt);
      detail->table.set_active(0, detail->table.active_column());
    }
  with_grids([this](auto& grids) { pair_panel_.table.show(grids.pairs); });
  series_panel_.table.show(points_);
  pair_panel_.empty_hint = series ? "No pairs: choose Insert for the first one, or paste rows."
                                  : "Insert a function first. Its segment pairs are edited here.";
  series_panel_.empty_hint = series ? "No points: choose Insert for the first one, or paste rows."
                                    : "Insert a function first. Its times and values are edited here.";
  if (has_field()) { // otherwise the captions stay as at opening
    const std::string field = description_of_field(), function = description_of_function();
    pair_panel_.label = series ? with_names("Segment pairs", field, function) : "Segment pairs";
    series_panel_.label = series ? with_names("Time/value pairs", field, function) : "Time/value pairs";
  }
  refresh_series();
  refresh_texts();
}

bool TExchangesFlowsForm::note_function() {
  const std::optional<series_ref> series = active_series();
  auto function = series ? std::optional(identity_of(*host().data_set(), *series)) : std::nullopt;
  shown_count_ = series ? series_count(*host().data_set(), series->kind, series->owner) : 0;
  return std::exchange(shown_function_, function) != function;
}

std::optional<series_ref> TExchangesFlowsForm::active_series() const {
  const prevesk_dataset_data_type* data = host().data_set();
  const series_ref ref{exchange_mode ? series_kind::exchange_function : series_kind::flow_function,
                       field_panel_.table.active_row(), function_panel_.table.active_row()};
  return data && find_series(*data, ref) ? std::optional(ref) : std::nullopt;
}

bool TExchangesFlowsForm::has_field() const {
  const prevesk_dataset_data_type* data = host().data_set();
  const series_kind kind = exchange_mode ? series_kind::exchange_function : series_kind::flow_function;
  return data && field_panel_.table.active_row() < owner_count(*data, kind);
}

std::string TExchangesFlowsForm::description_of_field() const {
  const prevesk_dataset_data_type* data = host().data_set();
  const std::size_t row = field_panel_.table.active_row();
  const auto of = [row](const auto& fields) {
    return row < fields.size() ? shown_text(fields[row].description) : std::string();
  };
  if (!data) return {};
  return exchange_mode ? of(data->exchange_fields) : of(data->flow_fields);
}

std::string TExchangesFlowsForm::description_of_function() const {
  const std::optional<series_ref> ref = active_series();
  if (!ref) return {};
  const prevesk_dataset_data_type& data = *host().data_set();
  return exchange_mode ? shown_text(data.exchange_fields[ref->owner].functions[ref->index].description)
                       : shown_text(data.flow_fields[ref->owner].functions[ref->index].description);
}

std::optional<std::size_t> TExchangesFlowsForm::segment_in_focus() const {
  const prevesk_dataset_data_type* data = host().data_set();
  const std::optional<series_ref> ref = active_series();
  if (!ref) return std::nullopt;
  const std::size_t row = pair_panel_.table.active_row();
  const auto of = [&](const auto& fields) -> std::optional<std::size_t> {
    const auto& pairs = fields[ref->owner].functions[ref->index].pairs;
    if (row >= pairs.size()) return std::nullopt;
    for (const std::size_t column : {0U, 1U})
      if (const std::int32_t end = end_of(pairs[row], column);
          end >= 0 && static_cast<std::size_t>(end) < data->segments.size())
        return static_cast<std::size_t>(end);
    return std::nullopt;
  };
  return exchange_mode ? of(data->exchange_fields) : of(data->flow_fields);
}

namespace {

// Position of a pair.
struct pair_place {
  std::size_t field = 0, function = 0, pair = 0;
  friend auto operator<=>(const pair_place&, const pair_place&) = default;
};

// The first pair after `now` that refers to the segment, wrapping around.
template <class Fields>
std::optional<pair_place> next_pair(const Fields& fields, const pair_place& now, std::int32_t segment) {
  std::optional<pair_place> first;
  for (pair_place at; at.field < fields.size(); ++at.field)
    for (at.function = 0; at.function < fields[at.field].functions.size(); ++at.function) {
      const auto& pairs = fields[at.field].functions[at.function].pairs;
      for (at.pair = 0; at.pair < pairs.size(); ++at.pair) {
        if (end_of(pairs[at.pair], 0) != segment && end_of(pairs[at.pair], 1) != segment) continue;
        if (at > now) return at;
        if (!first) first = at;
      }
    }
  return first;
}

} // namespace

bool TExchangesFlowsForm::select_segment(std::size_t segment) {
  const pair_place now{field_panel_.table.active_row(), function_panel_.table.active_row(),
                       pair_panel_.table.active_row()};
  const auto number = static_cast<std::int32_t>(segment);
  const prevesk_dataset_data_type& data = *host().data_set();
  const auto found =
      exchange_mode ? next_pair(data.exchange_fields, now, number) : next_pair(data.flow_fields, now, number);
  if (!found) return false;
  go_to_row(field_panel_, found->field);
  go_to_row(function_panel_, found->function);
  go_to_row(pair_panel_, found->pair);
  return true;
}

std::string TExchangesFlowsForm::find_refusal() {
  const prevesk_dataset_data_type* data = host().data_set();
  if (!data) return {};
  const auto find_in = [](const auto& fields) -> std::string {
    for (const auto& field : fields)
      for (const auto& function : field.functions)
        if (!moments_unique(function.points))
          return "Detected duplicate moment in time function for\r\n" + shown_text(field.description) + " " +
                 shown_text(function.description);
    return {};
  };
  if (exchange_mode) return find_in(data->exchange_fields);
  return find_in(data->flow_fields).empty() ? "" : "Each record must be unique"; // the short text is the required one
}

} // namespace vesk
