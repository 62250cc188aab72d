#include "dataset/catalogue.h"

#include <algorithm>
#include <cmath>

namespace vesk {

namespace {

// The rows of one table, with column values converted; a value that cannot be converted throws, with one sentence.
class table {
public:
  table(catalogue_store& store, std::string_view name, std::vector<std::string_view> columns)
      : name_(name), columns_(std::move(columns)), rows_(store.read(name_, columns_)) {}

  std::size_t size() const { return rows_.size(); }

  // Null reads as 0 or as an empty text.
  std::int64_t integer(std::size_t row, std::size_t column) const {
    const catalogue_value& value = rows_[row][column];
    if (const auto* i = std::get_if<std::int64_t>(&value)) return *i;
    if (const auto* d = std::get_if<double>(&value); d && *d == std::floor(*d) && std::abs(*d) < 9e15)
      return static_cast<std::int64_t>(*d);
    if (std::holds_alternative<std::monostate>(value)) return 0;
    wrong(row, column, "a whole number");
  }
  std::uint32_t number(std::size_t row, std::size_t column) const {
    const std::int64_t value = integer(row, column);
    if (value < 0 || value > std::numeric_limits<std::uint32_t>::max()) wrong(row, column, "a number of 0 or more");
    return static_cast<std::uint32_t>(value);
  }
  double real(std::size_t row, std::size_t column) const {
    const catalogue_value& value = rows_[row][column];
    if (const auto* d = std::get_if<double>(&value)) return *d;
    if (const auto* i = std::get_if<std::int64_t>(&value)) return static_cast<double>(*i);
    if (std::holds_alternative<std::monostate>(value)) return 0;
    wrong(row, column, "a number");
  }
  std::string text(std::size_t row, std::size_t column) const {
    const catalogue_value& value = rows_[row][column];
    if (const auto* s = std::get_if<std::string>(&value)) return *s;
    if (const auto* i = std::get_if<std::int64_t>(&value)) return std::to_string(*i);
    if (std::holds_alternative<std::monostate>(value)) return {};
    wrong(row, column, "a text");
  }

  // The rows whose first column is `key`, ordered by the last column, Sort_key; rows with equal Sort_key in the store's
  // order.
  std::vector<std::size_t> rows_of(std::uint32_t key) const {
    std::vector<std::size_t> result;
    for (std::size_t row = 0; row < size(); ++row)
      if (integer(row, 0) == key) result.push_back(row);
    return sorted(std::move(result));
  }
  std::vector<std::size_t> all_rows() const {
    std::vector<std::size_t> result(size());
    for (std::size_t row = 0; row < size(); ++row) result[row] = row;
    return sorted(std::move(result));
  }

private:
  std::vector<std::size_t> sorted(std::vector<std::size_t> rows) const {
    const std::size_t key = columns_.size() - 1;
    std::stable_sort(rows.begin(), rows.end(),
                     [&](std::size_t a, std::size_t b) { return integer(a, key) < integer(b, key); });
    return rows;
  }
  [[noreturn]] void wrong(std::size_t row, std::size_t column, const char* wanted) const {
    throw catalogue_exception("Catalogue table " + name_ + ", row " + std::to_string(row + 1) + ": column " +
                              std::string(columns_[column]) + " is not " + wanted + ".");
  }

  std::string name_;
  std::vector<std::string_view> columns_;
  std::vector<catalogue_row> rows_;
};

// All tables of the catalogue. The first column is the key by which the rows of a model or group are found.
struct tables {
  explicit tables(catalogue_store& store)
      : models(store, "models", {"Model_id", "Model_name", "Library", "Sort_key"}),
        solution(store, "solution", {"ID", "Solution"}),
        parameters(store, "Parameters",
                   {"Model_id", "ISC_number", "Minimum", "Maximum", "Default", "Description", "Sort_key"}),
        systems(store, "Systems", {"Model_id", "Model_system_id", "Description", "Sort_key"}),
        constants(store, "Constants",
                  {"Group_id", "ISC_number", "Minimum", "Maximum", "Default", "Description", "Sort_key"}),
        constants_groups(store, "Constants_groups", {"Model_id", "Group_id", "Description", "Sort_key"}),
        time_functions(store, "Time_functions", {"Model_id", "ISC_number", "Description", "Sort_key"}),
        segment_types(store, "segment_types", {"Model_id", "Vesk_segment_type_id", "Description", "Sort_key"}),
        output_control(store, "output_control",
                       {"Model_Id", "ISC_number", "Description", "Units", "Short_Desc", "Csv_filename", "Sort_key"}) {}

  table models, solution, parameters, systems, constants, constants_groups, time_functions, segment_types,
      output_control;
};

std::vector<catalogue_parameter> ranged_items(const table& t, std::uint32_t key) {
  std::vector<catalogue_parameter> result;
  for (const std::size_t row : t.rows_of(key))
    result.push_back({t.number(row, 1), t.real(row, 2), t.real(row, 3), t.real(row, 4), t.text(row, 5)});
  return result;
}

catalogue_model read_model(const tables& t, std::size_t row) {
  catalogue_model model{t.models.number(row, 0), t.models.text(row, 1), t.models.text(row, 2), {}, {}, {}, {}, {}, {}};
  const std::uint32_t id = model.model_id;
  model.parameters = ranged_items(t.parameters, id);
  for (const std::size_t r : t.systems.rows_of(id))
    model.systems.push_back({t.systems.number(r, 1), t.systems.text(r, 2)});
  for (const std::size_t r : t.time_functions.rows_of(id))
    model.time_functions.push_back({t.time_functions.number(r, 1), t.time_functions.text(r, 2)});
  for (const std::size_t r : t.constants_groups.rows_of(id)) {
    const std::uint32_t group = t.constants_groups.number(r, 1);
    model.constant_groups.push_back({group, t.constants_groups.text(r, 2), ranged_items(t.constants, group)});
  }
  for (const std::size_t r : t.segment_types.rows_of(id))
    model.segment_types.push_back({t.segment_types.number(r, 1), t.segment_types.text(r, 2)});
  for (const std::size_t r : t.output_control.rows_of(id))
    model.outputs.push_back({t.output_control.number(r, 1), t.output_control.text(r, 2), t.output_control.text(r, 3),
                             t.output_control.text(r, 4), t.output_control.text(r, 5)});
  return model;
}

} // namespace

const catalogue_model* model_catalogue::find_model(std::uint32_t model_id) const {
  for (const catalogue_model& model : models)
    if (model.model_id == model_id) return &model;
  return nullptr;
}

std::shared_ptr<const model_catalogue> read_catalogue(catalogue_store& store) {
  const tables t(store);
  auto result = std::make_shared<model_catalogue>();
  for (const std::size_t row : t.models.all_rows()) result->models.push_back(read_model(t, row));
  for (std::size_t row = 0; row < t.solution.size(); ++row)
    result->solution_techniques.push_back(
        {static_cast<std::int32_t>(t.solution.integer(row, 0)), t.solution.text(row, 1)});
  // This table has no Sort_key.
  std::stable_sort(result->solution_techniques.begin(), result->solution_techniques.end(),
                   [](const auto& a, const auto& b) { return a.id < b.id; });
  return result;
}

} // namespace vesk
