#include "runs/value_list.h"

#include "dataset/iso_dates.h"
#include "runs/csv_table.h"
#include "runs/value_path.h"

#include <array>
#include <charconv>
#include <set>

namespace vesk {

namespace {

constexpr const char* relative_step = "0.01";

std::string number_text(double value) {
  std::array<char, 32> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

bool in_use(const prevesk_dataset_data_type& data, const value_ref& ref) {
  return !ref.row->in_use || ref.row->in_use(data, ref.at);
}

std::string date_text(double date_time) {
  const moment_type moment = moment_type::from_date_time(date_time);
  return iso_date(moment.date).value_or("") + "T" + iso_time(moment.time).value_or("");
}

} // namespace

void list_parameters(const prevesk_dataset_data_type& data, const std::function<void(const std::string&)>& line) {
  line("name,path,minimum,maximum,start,transform,step\n");
  std::set<std::string> names;
  for_each_value(data, [&](const value_ref& ref) {
    if (!in_use(data, ref) || ref.row->kind == path_kind::date) return;
    std::string name = name_of_value(data, ref);
    if (!names.insert(name).second) names.insert(name = ref.path); // duplicate names fall back to the path
    const bool is_series = ref.row->kind == path_kind::series;
    std::string range = ",";
    if (ref.row->range) {
      const auto [minimum, maximum] = ref.row->range(data, ref.at);
      if (minimum < maximum) range = number_text(minimum) + "," + number_text(maximum);
    }
    line(csv_field(name) + "," + ref.path + (is_series ? "*=" : "") + "," + range + "," +
         (is_series ? "1" : number_text(ref.row->read(data, ref.at))) + ",none," + relative_step + "\n");
  });
}

void list_values(const prevesk_dataset_data_type& data, const std::function<void(const std::string&)>& line) {
  for_each_value(data, [&](const value_ref& ref) {
    if (!in_use(data, ref)) return;
    std::string value;
    if (ref.row->kind == path_kind::series)
      value = std::to_string(find_series(data, ref.row->series(ref.at))->points.size()) + " points";
    else if (ref.row->kind == path_kind::date)
      value = date_text(ref.row->read(data, ref.at));
    else
      value = number_text(ref.row->read(data, ref.at));
    const std::string name = name_of_value(data, ref);
    line(ref.path + "  " + value + (name == ref.path ? "" : "  " + name) + "\n");
  });
}

} // namespace vesk
