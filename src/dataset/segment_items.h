// The per-segment lists of parameter and system values.
//
// In a model of a million segments each segment has tens of these records. Their ISC numbers are almost always the same
// in all segments, so numbers and values are stored in two arrays, which can be shared if equal. Records are read and
// written whole, by position.
#pragma once

#include "dataset/shared_array.h"

#include <cstdint>

namespace vesk {

// A parameter's value in one segment.
struct segment_parameter_data_record_type {
  using payload = double;

  std::uint32_t isc = 0; // ISC number of the parameter
  double value = 0;

  segment_parameter_data_record_type() = default;
  segment_parameter_data_record_type(std::uint32_t i, double v) : isc(i), value(v) {}
  payload values() const { return value; }
  friend bool operator==(const segment_parameter_data_record_type&,
                         const segment_parameter_data_record_type&) = default;
};

// A system's initial state in one segment.
struct segment_system_data_record_type {
  struct payload {
    double initial_concentration = 0;
    double fraction_dissolved = 1.0;
    friend bool operator==(const payload&, const payload&) = default;
  };

  std::uint32_t isc = 0;            // `isc` of the system
  double initial_concentration = 0; // in the system's unit, usually mg/L
  double fraction_dissolved = 1.0;  // 0 to 1

  segment_system_data_record_type() = default;
  segment_system_data_record_type(std::uint32_t i, payload p)
      : isc(i), initial_concentration(p.initial_concentration), fraction_dissolved(p.fraction_dissolved) {}
  segment_system_data_record_type(std::uint32_t i, double initial, double dissolved)
      : isc(i), initial_concentration(initial), fraction_dissolved(dissolved) {}
  payload values() const { return {initial_concentration, fraction_dissolved}; }
  friend bool operator==(const segment_system_data_record_type&, const segment_system_data_record_type&) = default;
};

template <class Record>
class segment_item_list {
public:
  using payload = typename Record::payload;

  segment_item_list() = default;
  segment_item_list(shared_array<std::uint32_t> isc, shared_array<payload> values)
      : isc_(std::move(isc)), values_(std::move(values)) {
    assert(isc_.size() == values_.size());
  }

  std::size_t size() const { return isc_.size(); }
  bool empty() const { return isc_.empty(); }
  Record operator[](std::size_t i) const { return {isc_[i], values_[i]}; }
  void set(std::size_t i, const Record& record) {
    if (isc_[i] != record.isc) isc_.set(i, record.isc); // keeps numbers shared with other segments unchanged
    values_.set(i, record.values());
  }
  // Of record i, which keeps its number.
  void set_values(std::size_t i, const payload& values) { values_.set(i, values); }
  void push_back(const Record& record) {
    isc_.push_back(record.isc);
    values_.push_back(record.values());
  }
  void resize(std::size_t count, const Record& record = {}) {
    isc_.resize(count, record.isc);
    values_.resize(count, record.values());
  }

  // The two columns, in the order of the records.
  const shared_array<std::uint32_t>& isc_numbers() const { return isc_; }
  const shared_array<payload>& values() const { return values_; }

  friend bool operator==(const segment_item_list&, const segment_item_list&) = default;

private:
  shared_array<std::uint32_t> isc_;
  shared_array<payload> values_;
};

using segment_parameter_list = segment_item_list<segment_parameter_data_record_type>;
using segment_system_list = segment_item_list<segment_system_data_record_type>;

} // namespace vesk
