// The model catalogue: the models that exist, and the items of each.
//
// Read once from its store into an immutable value shared by all data sets and threads.
#pragma once

#include "dataset/records.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vesk {

// The catalogue cannot be read: one sentence with store, table and cause.
class catalogue_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct catalogue_parameter {
  std::uint32_t isc;
  double minimum, maximum, default_value;
  std::string description;

  friend bool operator==(const catalogue_parameter&, const catalogue_parameter&) = default;
};
using catalogue_constant = catalogue_parameter;

struct catalogue_system {
  std::uint32_t model_system_id;
  std::string description;

  friend bool operator==(const catalogue_system&, const catalogue_system&) = default;
};

struct catalogue_time_function {
  std::uint32_t isc;
  std::string description;

  friend bool operator==(const catalogue_time_function&, const catalogue_time_function&) = default;
};

struct catalogue_constant_group {
  std::uint32_t group_id;
  std::string description;
  std::vector<catalogue_constant> constants;

  friend bool operator==(const catalogue_constant_group&, const catalogue_constant_group&) = default;
};

struct catalogue_segment_type {
  std::uint32_t vesk_segment_type_id;
  std::string description;

  friend bool operator==(const catalogue_segment_type&, const catalogue_segment_type&) = default;
};

struct catalogue_output {
  std::uint32_t isc;
  std::string description, units, short_desc, csv_filename;

  friend bool operator==(const catalogue_output&, const catalogue_output&) = default;
};

// A model with all its items, each list in the order of its Sort_key.
struct catalogue_model {
  std::uint32_t model_id;
  std::string model_name;
  std::string library; // file name of the engine library
  std::vector<catalogue_parameter> parameters;
  std::vector<catalogue_system> systems;
  std::vector<catalogue_time_function> time_functions;
  std::vector<catalogue_constant_group> constant_groups;
  std::vector<catalogue_segment_type> segment_types;
  std::vector<catalogue_output> outputs;

  friend bool operator==(const catalogue_model&, const catalogue_model&) = default;
};

struct model_catalogue {
  std::vector<catalogue_model> models;                      // in the order of Sort_key
  std::vector<solution_technique_type> solution_techniques; // in the order of ID

  // The model, or nullptr if it is not in the catalogue.
  const catalogue_model* find_model(std::uint32_t model_id) const;

  friend bool operator==(const model_catalogue&, const model_catalogue&) = default;
};

using catalogue_value = std::variant<std::monostate, std::int64_t, double, std::string>; // monostate: null
using catalogue_row = std::vector<catalogue_value>;

// Where the catalogue's tables are stored. Read-only.
class catalogue_store {
public:
  virtual ~catalogue_store() = default;

  // All rows of `table` with the named columns, in the order of `columns`; rows in the store's own order. Table and
  // column names ignore letter case. Throws catalogue_exception if the store, the table or a column is missing or
  // unreadable.
  virtual std::vector<catalogue_row> read(std::string_view table, const std::vector<std::string_view>& columns) = 0;
};

// Reads the whole catalogue. Throws catalogue_exception.
std::shared_ptr<const model_catalogue> read_catalogue(catalogue_store& store);

} // namespace vesk
