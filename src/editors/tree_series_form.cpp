#include "editors/tree_series_form.h"

namespace vesk {

namespace {

std::vector<record_column<system_data_type>> factor_columns(const tree_series_form::traits& traits) {
  using system = system_data_type;
  const std::string format(traits.factor_format);
  return {
      {.header = "System", .type = text_cell(), .field = &system::description, .tool_tip = description_tip},
      {.header = "Scale factor", .type = number_cell({}), .field = traits.scale, .format = format},
      {.header = "Conversion factor", .type = number_cell({}), .field = traits.conversion, .format = format},
  };
}

} // namespace

tree_series_form::tree_series_form(editor_host& host, const traits& differences)
    : editor(host), traits_(differences), points_(host, std::string(differences.value_format)),
      systems_(data_set_grid(host, &prevesk_dataset_data_type::systems, factor_columns(differences))),
      series_panel_(add_panel("TimeFunctionFillCalcTable", points_, series_buttons, &points_)),
      system_panel_(add_panel("SystemFillCalcTable", systems_, block_buttons)) {
  series_panel_.graph_label = [this] {
    std::string name = full_name(*points_.ref());
    name.front() = 'S';
    return name;
  };
}

std::size_t tree_series_form::group_count() const {
  return host().data_set() ? host().data_set()->systems.size() : 0;
}

std::string tree_series_form::group_text(std::size_t system) const {
  return host().data_set()->systems[system].description.str();
}

std::size_t tree_series_form::item_count(std::size_t system) const {
  return system < group_count() ? series_count(*host().data_set(), traits_.kind, system) : 0;
}

std::string tree_series_form::item_text(std::size_t system, std::size_t item) const {
  return segment_name(segment_of({traits_.kind, system, item}));
}

std::int32_t tree_series_form::segment_of(const series_ref& ref) const {
  const system_data_type& system = host().data_set()->systems[ref.owner];
  return ref.kind == series_kind::load ? system.loads[ref.index].segment : system.boundaries[ref.index].segment;
}

std::string tree_series_form::segment_name(std::int32_t segment) const {
  const auto& segments = host().data_set()->segments;
  const bool inside = segment >= 0 && static_cast<std::size_t>(segment) < segments.size();
  return inside ? segments[static_cast<std::size_t>(segment)].name.str() : std::string();
}

std::string tree_series_form::full_name(const series_ref& ref) const {
  const std::int32_t segment = segment_of(ref);
  return "segment " + std::to_string(static_cast<std::int64_t>(segment) + 1) + " (" + segment_name(segment) + "), " +
         group_text(ref.owner);
}

std::optional<series_ref> tree_series_form::selected_record() const {
  if (!selected_ || !selected_->group || !selected_->item) return std::nullopt;
  const series_ref ref{traits_.kind, *selected_->group, *selected_->item};
  return host().data_set() && find_series(*host().data_set(), ref) ? std::optional(ref) : std::nullopt;
}

void tree_series_form::select(std::optional<node> which) {
  if (selected_ == which) return;
  if (!may_go_on()) return refresh_tree(); // which shows the old selection again
  selected_ = std::move(which);
  series_panel_.table.set_selection(std::nullopt);
  series_panel_.table.set_active(0, series_panel_.table.active_column());
  show_selected();
}

void tree_series_form::take_content() {
  systems_.take_formats(host());
  points_.take_format();
  if (!selected_record()) selected_.reset();
  system_panel_.table.show(systems_);
  refresh_tree();
  show_selected();
}

void tree_series_form::records_changed() {
  selected_.reset();
  refresh_tree();
  show_selected();
}

void tree_series_form::show_selected() {
  const std::optional<series_ref> ref = selected_record();
  points_.set_series(ref);
  const bool on_record_level = selected_ && selected_->item;
  series_panel_.label = ref               ? "Time functions for " + full_name(*ref)
                        : on_record_level ? "Time functions"
                                          : "Time Functions";
  series_panel_.empty_hint = ref ? std::string() : std::string(traits_.empty_hint);
  InterpolationTypeComboBox.is_visible = ref.has_value();
  if (ref) {
    const std::uint32_t type = interpolation_of(*host().data_set(), *ref);
    InterpolationTypeComboBox.position = type == interpolation_linear ? 0 : 1;
  }
  series_panel_.table.show(points_);
  refresh_series();
  refresh_texts();
}

void tree_series_form::ChoiceChange(std::size_t position) {
  const std::optional<series_ref> ref = selected_record();
  if (!ref || !may_go_on() || position == InterpolationTypeComboBox.position) return refresh_texts();
  host().begin_step(caption() + ": Interpolation", {});
  edit_interpolation(*host().data_set(), *ref) = static_cast<std::uint32_t>(position);
  host().end_step(true);
  show_selected();
}

std::string tree_series_form::find_refusal() {
  const prevesk_dataset_data_type* data = host().data_set();
  std::string refusal;
  if (!data) return refusal;
  for_each_series(*data, traits_.kind, [&](const series_ref& ref) {
    if (refusal.empty() && !moments_unique(find_series(*data, ref)->points))
      refusal = "Detected duplicate moment in time function for\r\n" + full_name(ref);
  });
  return refusal;
}

} // namespace vesk
