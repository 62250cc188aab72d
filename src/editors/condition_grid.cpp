#include "editors/condition_grid.h"

#include <algorithm>

namespace vesk {

namespace {

constexpr std::size_t first_beyond = 1 << 30; // plus the row: shows the row's own text, which the list may lack

std::string_view without_blanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace

// A cell's type belongs to its column, but each row has its own choices. The column's list is therefore that of the
// active row, the only one that can be open, and every cell shows its text as an item beyond the list.
class condition_grid::row_items final : public item_list {
public:
  using list_reader = std::function<const std::vector<std::string>&()>;
  using text_reader = std::function<std::string(std::size_t row)>;

  row_items(list_reader list, text_reader text, std::function<bool()> is_a_part)
      : list_(std::move(list)), text_of_(std::move(text)), is_a_part_(std::move(is_a_part)) {}

  static constexpr std::size_t typed_item = first_beyond - 1;
  const std::string& typed() const { return typed_; }

  std::size_t size() const override { return list_().size(); }
  std::string text(std::size_t item) const override { return list_()[item]; }
  std::string text_beyond(std::size_t position) const override {
    return position >= first_beyond ? text_of_(position - first_beyond) : typed_;
  }
  bool takes_other_texts() const override { return is_a_part_(); }
  std::optional<std::size_t> find(std::string_view wanted) const override {
    const std::vector<std::string>& list = list_();
    auto found = std::ranges::find(list, wanted); // values may differ in the case of a letter
    if (found == list.end())
      found = std::ranges::find_if(list, [&](const std::string& one) { return without_blanks(one) == wanted; });
    if (found != list.end()) return static_cast<std::size_t>(found - list.begin());
    if (const auto in_any_case = item_list::find(wanted)) return in_any_case;
    if (!is_a_part_()) return std::nullopt;
    typed_ = wanted;
    return typed_item;
  }

private:
  list_reader list_;
  text_reader text_of_;
  std::function<bool()> is_a_part_; // the list is incomplete: the source has more values
  mutable std::string typed_;       // the last typed text that was not in the list
};

condition_grid::condition_grid(import_query& query, std::function<std::size_t()> active_row)
    : query_(query), active_row_(std::move(active_row)),
      fields_(std::make_shared<row_items>(
          [this]() -> const std::vector<std::string>& { return query_.field_names; },
          [this](std::size_t row) { return row < row_count() ? query_.stored.conditions[row].field_name : ""; },
          [] { return false; })),
      values_(std::make_shared<row_items>(
          [this]() -> const std::vector<std::string>& { return values_of_active_row(); },
          [this](std::size_t row) { return row < row_count() ? query_.stored.conditions[row].value_text : ""; },
          [this] {
            const std::size_t row = active_row_();
            return row < query_.choices.size() && query_.choices[row].value_count > query_.choices[row].values.size();
          })) {
  const auto combo = [](std::shared_ptr<const item_list> items) {
    return cell_type{.kind = cell_kind::combo, .items = std::move(items)};
  };
  columns_ = {{"", combo_cell({"AND", "OR"}), true, true},
              {"Field", combo(fields_), true, true},
              {"", combo_cell({"=", "<", "<=", ">", ">="}), true, true},
              {"Value", combo(values_), true, true}};
}

const std::vector<std::string>& condition_grid::values_of_active_row() const {
  static const std::vector<std::string> none;
  const std::size_t row = active_row_();
  return row < query_.choices.size() ? query_.choices[row].values : none;
}

// The first row has no preceding row to be linked to.
cell_value condition_grid::value(std::size_t row, std::size_t column) const {
  if (row >= row_count() || (row == 0 && column == conjunction_column)) return {};
  const query_condition& condition = query_.stored.conditions[row];
  switch (column) {
  case conjunction_column: return static_cast<double>(condition.conjunction);
  case comparison_column: return static_cast<double>(condition.comparison);
  default: return static_cast<double>(first_beyond + row);
  }
}

void condition_grid::set_value(std::size_t row, std::size_t column, const cell_value& value) {
  if (row >= row_count()) return;
  const auto item = static_cast<std::size_t>(std::get<double>(value));
  switch (column) {
  case conjunction_column: query_.stored.conditions[row].conjunction = static_cast<std::uint32_t>(item); return;
  case comparison_column: query_.stored.conditions[row].comparison = static_cast<std::uint32_t>(item); return;
  case field_column:
    if (query_.field_names[item] == query_.stored.conditions[row].field_name) return; // chosen again
    query_.choose_field(row, item);
    break;
  default:
    if (item != row_items::typed_item) return query_.choose_value(row, item);
    query_.enter_value(row, values_->typed());
  }
  if (OnValuesWanted) OnValuesWanted(row);
}

std::string condition_grid::tool_tip(std::size_t, std::size_t column) const {
  switch (column) {
  case conjunction_column: return "How this condition is linked to the one above. AND binds more tightly than OR.";
  case field_column: return "The field that is compared";
  case comparison_column: return "How the field is compared with the value";
  default: return "A value that the field has in the table";
  }
}

} // namespace vesk
