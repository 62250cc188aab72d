#include "editors/segment_form.h"

#include "dataset/findings.h"
#include "dataset/network.h"
#include "editors/catalogue_tip.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vesk {

namespace {

constexpr const char* format = "SegmentsBasicNumericField";
constexpr const char* scale_format = "SegmentsVolumeScaleFactorPictureField";
constexpr const char* conversion_format = "SegmentsVolumeConversionFactorPictureField";
enum : std::size_t { type_column = 6 };

record_column<segment_data_type> number(std::string header, double segment_data_type::*field, std::string tip = {}) {
  return {.header = std::move(header),
          .type = number_cell({}),
          .field = field,
          .format = format,
          .tool_tip = std::move(tip)};
}

} // namespace

// The pages of values.

void segment_value_grid::take_columns() {
  columns_.clear();
  const prevesk_dataset_data_type* data = host_.data_set();
  if (!data) return;
  const cell_type type = number_cell(host_.number_format(format_));
  if (shown_ == content::parameters)
    for (const parameter_data_type& parameter : data->parameters)
      columns_.push_back({.header = shown_text(parameter.description), .type = type});
  else
    for (const system_data_type& system : data->systems)
      columns_.push_back({.header = shown_text(system.description), .type = type});
}

std::size_t segment_value_grid::row_count() const {
  return host_.data_set() && !columns_.empty() ? host_.data_set()->segments.size() : 0;
}

cell_value segment_value_grid::value(std::size_t row, std::size_t column) const {
  // Of a million segments the values alone: their numbers are other memory.
  const segment_data_type& segment = host_.data_set()->segments[row];
  if (shown_ == content::parameters) {
    const auto& parameters = segment.parameters.values();
    return column < parameters.size() ? cell_value(parameters[column]) : cell_value();
  }
  const auto& systems = segment.systems.values();
  if (column >= systems.size()) return {};
  return shown_ == content::initial_concentrations ? systems[column].initial_concentration
                                                   : systems[column].fraction_dissolved;
}

void segment_value_grid::set_value(std::size_t row, std::size_t column, const cell_value& value) {
  segment_data_type& segment = host_.data_set()->segments.edit(row);
  const double number = std::get<double>(value);
  if (shown_ == content::parameters) {
    if (column < segment.parameters.values().size()) segment.parameters.set_values(column, number);
    return;
  }
  if (column >= segment.systems.values().size()) return;
  auto system = segment.systems.values()[column];
  (shown_ == content::initial_concentrations ? system.initial_concentration : system.fraction_dissolved) = number;
  segment.systems.set_values(column, system);
}

cell_mark segment_value_grid::mark(std::size_t row, std::size_t column) const {
  const cell_value shown = value(row, column);
  const double* number = std::get_if<double>(&shown);
  if (!number) return {};
  if (!std::isfinite(*number)) return {not_finite_finding};
  if (shown_ == content::fractions_dissolved)
    return {*number >= 0 && *number <= 1 ? "" : "A dissolved fraction must lie between 0 and 1."};
  const parameter_data_type* of = parameter(column);
  return of && of->used ? cell_mark{range_finding(*number, of->minimum, of->maximum)} : cell_mark{};
}

const parameter_data_type* segment_value_grid::parameter(std::size_t column) const {
  const prevesk_dataset_data_type& data = *host_.data_set();
  return shown_ == content::parameters && column < data.parameters.size() ? &data.parameters[column] : nullptr;
}

std::string segment_value_grid::tool_tip(std::size_t row, std::size_t column) const {
  const std::string name = std::to_string(row + 1) + ": " + shown_text(host_.data_set()->segments[row].name);
  const parameter_data_type* of = parameter(column);
  return of ? name + "\n" + catalogue_tip(of->default_value, of->minimum, of->maximum) : name;
}

std::optional<cell_value> segment_value_grid::default_value(std::size_t, std::size_t column) const {
  const parameter_data_type* of = parameter(column);
  return of ? std::optional<cell_value>(of->default_value) : std::nullopt;
}

// The dialog.

std::vector<record_column<segment_data_type>> TSegmentForm::columns() {
  using segment = segment_data_type;
  // An unknown type maps to an item beyond the list, distinct from the first one, which is shown instead.
  const translated_member<segment> type{[this](const segment& one) {
                                          const auto found = type_id_to_item.find(one.segment_type);
                                          return static_cast<double>(
                                              found != type_id_to_item.end() ? found->second : item_to_type_id.size());
                                        },
                                        [this](segment& one, double item) {
                                          if (item < static_cast<double>(item_to_type_id.size()))
                                            one.segment_type = item_to_type_id[static_cast<std::size_t>(item)];
                                        }};
  const translated_member<segment> bottom{
      [this](const segment& one) { return BottomSegmentComboBoxField->item_of_reference(one.bottom_segment); },
      [this](segment& one, double item) { one.bottom_segment = BottomSegmentComboBoxField->reference_of_item(item); }};
  return {
      {.header = "Description", .type = text_cell(), .field = &segment::name},
      {.header = "Volume",
       .type = number_cell({}),
       .field = &segment::volume,
       .format = "SegmentsBasicValueSimpleField",
       .tool_tip = "m3, before the two volume factors"},
      number("Velocity\nMultiplier", &segment::vmult, "velocity = multiplier * flow ^ exponent"),
      number("Velocity\nExponent", &segment::vexp),
      number("Depth\nMultiplier", &segment::dmult, "depth = multiplier * flow ^ exponent"),
      number("Depth\nExponent", &segment::dexp),
      {.header = "Segment\nType",
       .type = combo_cell({"Surface", "Subsurface", "Surface Benthic", "Subsurface Benthic"}),
       .field = type},
      {.header = "Bottom\nSegment",
       .type = {.kind = cell_kind::combo, .items = BottomSegmentComboBoxField},
       .field = bottom},
      number("Length", &segment::length, "m"),
      number("Width", &segment::width, "m"),
      number("Minimum\nDepth", &segment::minimum_depth, "m"),
      number("Slope", &segment::slope),
      number("Bottom\nRoughness", &segment::bottom_roughness),
  };
}

TSegmentForm::TSegmentForm(editor_host& host)
    : editor(host), VolumeScaleFactorField("VolumeScaleFactorField", "Volume Scale Factor",
                                           number_cell(host.number_format(scale_format))),
      VolumeConversionFactorField("VolumeConversionFactorField", "Volume Conversion Factor",
                                  number_cell(host.number_format(conversion_format))),
      BottomSegmentComboBoxField(std::make_shared<segment_items>(host, "None", "No Segments")),
      segments_(data_set_grid(host, &prevesk_dataset_data_type::segments, columns())),
      parameters_(host, segment_value_grid::content::parameters, "SegmentsParametersSimpleField"),
      concentrations_(host, segment_value_grid::content::initial_concentrations,
                      "SegmentsInitialConcentrationsNumericField"),
      fractions_(host, segment_value_grid::content::fractions_dissolved, "SegmentsFractionDissolvedNumericField"),
      panels_of_pages_{&add_panel("SegmentFillCalcTable", segments_, block_buttons | row_keys),
                       &add_panel("ParametersFillCalcTable", parameters_, block_buttons),
                       &add_panel("InitialConcentrationsFillCalcTable", concentrations_, block_buttons),
                       &add_panel("FractionDissolvedFillCalcTable", fractions_, block_buttons)} {
  segments_.bottoms = BottomSegmentComboBoxField;
  segments_.make_inserted = segments_.make_appended = [] { return segment_data_type{}; };
  segments_.mark_of = [this](const segment_data_type& segment, std::size_t column) -> cell_mark {
    if (column != type_column || item_to_type_id.empty() || type_id_to_item.contains(segment.segment_type)) return {};
    return {"The model has no segment type " + std::to_string(segment.segment_type) + "; the first one is shown."};
  };
  panels_of_pages_[0]->empty_hint = "No segments: choose Insert, or paste rows from a spreadsheet.";
  for (std::size_t page = 1; page < panels_of_pages_.size(); ++page)
    panels_of_pages_[page]->empty_hint = page == 1 ? "The model has no parameters, or there are no segments."
                                                   : "The model has no systems, or there are no segments.";
  panels_of_pages_[0]->table.OnRowsChanged = [this] { rows_changed(); };
  for (editor_panel* entered : panels_of_pages_)
    entered->table.OnEnteringRow = [this](std::size_t row) { // the pages share the active row
      for (editor_panel* other : panels_of_pages_) {
        if (other->table.active_row() == row) continue;
        other->table.set_selection(std::nullopt);
        other->table.set_active(row, other->table.active_column());
      }
    };
}

std::vector<editor_page> TSegmentForm::pages() const {
  return {{"Segments", 0, 1}, {"Parameters", 1, 1}, {"Initial Concentrations", 2, 1}, {"Fraction Dissolved", 3, 1}};
}

std::vector<editor_command> TSegmentForm::common_commands() {
  return {{"&Insert", "InsertButton", [this] { InsertButtonClick(); },
           "Insert a segment before the active one. Pairs, loads and boundaries keep their segment numbers."},
          {"&Delete", "DeleteButton", [this] { DeleteButtonClick(); },
           "Delete the active segment. Pairs, loads and boundaries keep their segment numbers."},
          {"Insert and re&number", "InsertAndRenumberButton", [this] { insert_and_renumber_click(); },
           "Insert a segment before the active one. Pairs, loads and boundaries keep their segments."},
          {"De&lete and renumber", "DeleteAndRenumberButton", [this] { delete_and_renumber_click(); },
           "Delete the selected segments with their pairs, loads and boundaries. The others keep their segments."}};
}

void TSegmentForm::FormShow() {
  page_ = 0;
  load_factors();
  editor::FormShow();
}

void TSegmentForm::load_factors() {
  const prevesk_dataset_data_type* data = host().data_set();
  VolumeScaleFactorField.load(data ? data->volume_scale_factor : 1);
  VolumeConversionFactorField.load(data ? data->volume_conversion_factor : 1);
}

// A job has replaced the data set: the user's entries are kept.
void TSegmentForm::data_set_replaced() {
  const prevesk_dataset_data_type* data = host().data_set();
  if (data && !VolumeScaleFactorField.touched()) VolumeScaleFactorField.load(data->volume_scale_factor);
  if (data && !VolumeConversionFactorField.touched()) VolumeConversionFactorField.load(data->volume_conversion_factor);
  editor::data_set_replaced();
}

bool TSegmentForm::FormCloseQuery(bool by_ok) {
  const bool closes = editor::FormCloseQuery(by_ok);
  if (closes) BottomSegmentComboBoxField->forget();
  return closes;
}

void TSegmentForm::take_content() {
  BottomSegmentComboBoxField->forget();
  segments_.take_formats(host());
  for (segment_value_grid* page : {&parameters_, &concentrations_, &fractions_}) page->take_columns();
  const std::size_t pulled = bottom_segment_refresh();
  if (pulled != 0)
    set_message((message().empty() ? "" : message() + " ") +
                "References past the last segment now refer to it: " + in_words({.bottoms = pulled}) + ".");
  segment_types_fill();
  segment_count_ = segments_.row_count();
  records_are_whole_ = host().data_set() && verify(*host().data_set()).empty();
  panels_of_pages_[0]->table.show(segments_);
  panels_of_pages_[1]->table.show(parameters_);
  panels_of_pages_[2]->table.show(concentrations_);
  panels_of_pages_[3]->table.show(fractions_);
}

void TSegmentForm::segment_types_fill() {
  type_id_to_item.clear();
  item_to_type_id.clear();
  std::vector<std::string> texts;
  const prevesk_dataset_data_type* data = host().data_set();
  const catalogue_model* model = data && data->catalogue() ? data->catalogue()->find_model(data->model_type) : nullptr;
  if (model)
    for (const catalogue_segment_type& type : model->segment_types) {
      type_id_to_item.emplace(type.vesk_segment_type_id, texts.size());
      item_to_type_id.push_back(type.vesk_segment_type_id);
      texts.push_back(shown_text(type.description));
    }
  segments_.set_items(type_column, std::make_shared<fixed_items>(std::move(texts), 0));
}

std::size_t TSegmentForm::bottom_segment_refresh() {
  return host().data_set() ? pull_bottom_references(*host().data_set()) : 0;
}

void TSegmentForm::rows_changed() {
  prevesk_dataset_data_type& data = *host().data_set();
  const std::string renamed = what_references_now_name();
  reconcile_segment_records(data, records_are_whole_ ? segments_.come : segment_range{});
  records_are_whole_ = true;
  if (data.segments.size() < segment_count_) bottom_segment_refresh();
  segment_count_ = data.segments.size();
  value_pages_refresh(); // the segments' own page shows its rows already
  if (!renamed.empty()) set_message(renamed);
}

// After a change of the number of rows, before bottom references past the end are set to the last segment.
std::string TSegmentForm::what_references_now_name() const {
  const prevesk_dataset_data_type& data = *host().data_set();
  const std::size_t count = data.segments.size(), first = segments_.come.first;
  if (count == segment_count_) return {};
  const auto sentence = [](const segment_references& which, const char* what) {
    if (which.total() == 0) return std::string();
    return in_words(which) + (which.total() == 1 ? " now names " : " now name ") + what + ".";
  };
  constexpr const char* another = "another segment";
  if (first == segment_count_) return sentence(references_to_appended(data, first), another);
  segment_references moved = references_between(data, first, count);
  segment_references lost = references_between(data, count, std::max(count, segment_count_));
  moved.bottoms += std::exchange(lost.bottoms, 0);
  const std::string of_moved = sentence(moved, another), of_lost = sentence(lost, "a segment that no longer exists");
  return of_moved + (of_moved.empty() || of_lost.empty() ? "" : " ") + of_lost;
}

void TSegmentForm::segment_grids_refresh() {
  panels_of_pages_[0]->table.display_rows();
  value_pages_refresh();
}

void TSegmentForm::value_pages_refresh() {
  for (std::size_t page = 1; page < panels_of_pages_.size(); ++page) panels_of_pages_[page]->table.display_rows();
}

void TSegmentForm::InsertButtonClick() {
  InsertRowButtonClick(*panels_of_pages_[0]);
}

void TSegmentForm::DeleteButtonClick() {
  DeleteRowButtonClick(*panels_of_pages_[0]);
}

void TSegmentForm::change_network(const std::string& label,
                                  const std::function<void(prevesk_dataset_data_type&)>& work) {
  history_step step = begin_step(label);
  work(*host().data_set());
  step.end();
  segment_count_ = segments_.row_count();
  segment_grids_refresh();
  refresh_texts();
}

void TSegmentForm::insert_and_renumber_click() {
  if (!may_go_on() || !host().data_set()) return;
  segment_references moved;
  change_network("Insert and renumber", [&](prevesk_dataset_data_type& data) {
    moved = insert_and_renumber(data, panels_of_pages_[0]->table.active_row());
  });
  set_message(
      moved.total() == 0 ? "" : "Renumbered, so that they name the same segments as before: " + in_words(moved) + ".");
}

void TSegmentForm::delete_and_renumber_click() {
  if (!may_go_on()) return;
  const cell_range rows = panels_of_pages_[page_]->table.selection();
  if (rows.top >= segments_.row_count()) return set_message(nothing_to_delete);
  const std::size_t count = std::min(rows.bottom + 1, segments_.row_count()) - rows.top;
  const std::string what = count > 1 ? "Segments " + std::to_string(rows.top + 1) + " to " +
                                           std::to_string(rows.top + count) + " were deleted"
                                     : "Segment " + std::to_string(rows.top + 1) + " (" +
                                           shown_text(host().data_set()->segments[rows.top].name) + ") was deleted";
  select_segment(rows.top); // before they go, as their rows do in every page
  segment_references removed;
  change_network("Delete and renumber",
                 [&](prevesk_dataset_data_type& data) { removed = erase_and_renumber(data, rows.top, count); });
  set_message(what +
              (removed.total() == 0 ? std::string()
                                    : ", with all that referred to " + std::string(count > 1 ? "them" : "it") + ": " +
                                          in_words(removed)) +
              ".");
}

void TSegmentForm::accepted() {
  prevesk_dataset_data_type* data = host().data_set();
  if (!data) return;
  data->volume_scale_factor = VolumeScaleFactorField.value();
  data->volume_conversion_factor = VolumeConversionFactorField.value();
}

std::optional<std::size_t> TSegmentForm::segment_in_focus() const {
  const std::size_t row = panels_of_pages_[0]->table.active_row();
  return host().data_set() && row < host().data_set()->segments.size() ? std::optional(row) : std::nullopt;
}

// On the current page: the pages share the active row.
bool TSegmentForm::select_segment(std::size_t segment) {
  for (editor_panel* panel : panels_of_pages_) panel->table.set_selection(std::nullopt);
  panels_of_pages_[0]->table.set_active(segment, panels_of_pages_[0]->table.active_column());
  return true;
}

} // namespace vesk
