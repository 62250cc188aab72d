// The writing visitor of the data file's layout, for any sink of bytes.
#pragma once

#include "dataset/binary_writer.h"
#include "dataset/vki_layout.h"

#include <limits>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace vesk {

// `Sink` has `number` and `bytes`, as binary_writer and byte_counter.
template <class Sink>
class vki_writer : public versioned {
public:
  // project_files_offset: where section 41 begins.
  vki_writer(Sink& sink, std::uint64_t project_files_offset)
      : versioned(prevesk_dataset_data_type::current_file_version()), sink_(sink),
        project_files_offset_(project_files_offset) {}

  void header(const std::uint32_t&) { // not the data set's version, which may be from a newer file
    sink_.number(version());
    sink_.number(static_cast<std::uint32_t>(project_files_offset_)); // the lower half if above 4 GiB
    sink_.number(std::uint32_t{0});
  }
  void section(int number, const char* name, const auto& member) {
    if constexpr (std::is_same_v<Sink, byte_counter>)
      if (number == layout<prevesk_dataset_data_type>::last_section) project_files_offset_ = sink_.count();
    field(name, member);
  }
  void points_section(int, const char* name, const stored_series& series) { field(name, series.points); }
  void query_section(int, const char* name, const stored_series& series) { field(name, series.query); }
  void retired_queries(int, const char*) {}
  void retired_text(const char*) {}

  std::uint64_t project_files_offset() const { return project_files_offset_; }

  void field(const char*, const bool& value) { sink_.number(static_cast<std::uint8_t>(value)); }
  void field(const char*, const std::uint32_t& value) { sink_.number(value); }
  void field(const char*, const std::int32_t& value) { sink_.number(value); }
  void field(const char*, const double& value) { sink_.number(value); }
  void field(const char*, const std::string& text) {
    count(text.size());
    sink_.bytes(text);
  }
  void field(const char* name, const short_text& text) { field(name, text.str()); }
  void field(const char*, const shared_value<import_query_descriptor>& query) {
    layout<import_query_descriptor>::fields(*this, *query);
  }
  void field(const char*, const std::vector<query_condition>& conditions) {
    count(conditions.size());
    for (const query_condition& condition : conditions) layout<query_condition>::fields(*this, condition);
  }

  // Points and pairs have the same layout in memory as in the file.
  template <class T>
  void field(const char*, const shared_array<T>& array) {
    count(array.size());
    sink_.bytes({reinterpret_cast<const char*>(array.data()), array.size() * sizeof(T)});
  }
  template <class Record>
  void field(const char*, const segment_item_list<Record>& items) {
    count(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
      sink_.number(items.isc_numbers()[i]);
      sink_.number(items.values()[i]);
    }
  }
  template <class Record>
  void field(const char* name, const shared_list<Record>& list) {
    count(list.size());
    for (const Record& record : list)
      if constexpr (std::is_same_v<Record, short_text>)
        field(name, record);
      else
        layout<Record>::fields(*this, record);
  }

private:
  void count(std::size_t size) {
    if (size > std::numeric_limits<std::uint32_t>::max())
      throw std::length_error("The data file cannot hold a text or list of more than 4294967295 elements.");
    sink_.number(static_cast<std::uint32_t>(size));
  }

  Sink& sink_;
  std::uint64_t project_files_offset_;
};

} // namespace vesk
