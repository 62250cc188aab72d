#include "field_by_field_reader.h"

#include "dataset/vki_layout.h"

#include <fstream>

namespace vesk::bench {

namespace {

// A reading visitor of the layout.
class field_reader : public versioned {
public:
  field_reader(std::ifstream& file, std::uint32_t version, deques_of_file& into)
      : versioned(version), file_(file), into_(into) {}

  void header(std::uint32_t& file_version) {
    file_version = version();
    number<std::uint32_t>();
    number<std::uint32_t>();
  }
  void section(int, const char* name, auto& member) { field(name, member); }
  void points_section(int, const char* name, stored_series& series) { field(name, series.points); }
  void query_section(int, const char* name, stored_series& series) { field(name, series.query); }
  void retired_queries(int, const char*) {}
  void retired_text(const char*) {}

  void field(const char*, bool& value) { value = number<std::uint8_t>() != 0; }
  void field(const char*, std::uint32_t& value) { value = number<std::uint32_t>(); }
  void field(const char*, std::int32_t& value) { value = number<std::int32_t>(); }
  void field(const char*, double& value) { value = number<double>(); }
  void field(const char*, std::string& text) {
    text.resize(number<std::uint32_t>());
    file_.read(text.data(), static_cast<std::streamsize>(text.size()));
  }
  void field(const char* name, short_text& text) {
    std::string whole;
    field(name, whole);
    text = whole;
  }
  void field(const char*, shared_value<import_query_descriptor>& query) {
    layout<import_query_descriptor>::fields(*this, query.edit());
  }
  void field(const char*, std::vector<query_condition>& conditions) {
    conditions.resize(number<std::uint32_t>());
    for (query_condition& condition : conditions) layout<query_condition>::fields(*this, condition);
  }
  void field(const char*, point_list&) {
    auto& points = into_.series.emplace_back();
    for (auto left = number<std::uint32_t>(); left > 0; --left) {
      object_point& point = points.emplace_back();
      point.date = number<std::int32_t>();
      point.time = number<std::int32_t>();
      point.value = number<double>();
    }
  }
  template <class Pair>
  void field(const char*, shared_array<Pair>& pairs) {
    for (auto left = number<std::uint32_t>(); left > 0; --left) {
      Pair pair;
      layout<Pair>::fields(*this, pair);
      pairs.push_back(pair);
    }
  }
  void field(const char*, segment_parameter_list&) { items(into_.parameters.emplace_back()); }
  void field(const char*, segment_system_list&) { items(into_.systems.emplace_back()); }
  template <class Record>
  void field(const char* name, shared_list<Record>& list) {
    list.clear();
    for (auto left = number<std::uint32_t>(); left > 0; --left) {
      list.push_back({});
      if constexpr (std::is_same_v<Record, short_text>)
        field(name, list.edit_back());
      else
        layout<Record>::fields(*this, list.edit_back());
    }
  }

private:
  template <class T>
  T number() {
    T result;
    file_.read(reinterpret_cast<char*>(&result), sizeof result);
    return result;
  }
  template <class Record>
  void items(std::deque<Record>& list) {
    for (auto left = number<std::uint32_t>(); left > 0; --left) layout<Record>::fields(*this, list.emplace_back());
  }

  std::ifstream& file_;
  deques_of_file& into_;
};

} // namespace

deques_of_file read_field_by_field(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::uint32_t version = 0;
  stream.read(reinterpret_cast<char*>(&version), sizeof version);
  deques_of_file result;
  field_reader reader(stream, version, result);
  layout<prevesk_dataset_data_type>::fields(reader, result.rest);
  if (!stream) throw std::runtime_error("the file ends early");
  return result;
}

} // namespace vesk::bench
