#include "query/deferred_queries.h"

#include <string>
#include <utility>

namespace vesk {

namespace {

class walk {
public:
  walk(prevesk_dataset_data_type& data_set, const query_executor& execute, query_progress& progress, bool clear_flags)
      : data_(data_set), execute_(execute), progress_(progress), clear_flags_(clear_flags), total_(count(data_set)) {}

  void all() {
    visit(
        data_.print_intervals, [] { return "Print Interval"; },
        [this]() -> stored_series& { return data_.print_intervals; });
    visit(
        data_.time_steps, [] { return "Time step"; }, [this]() -> stored_series& { return data_.time_steps; });
    for (std::size_t i = 0; i < data_.time_functions.size(); ++i)
      visit(
          data_.time_functions[i], [&, i] { return "Time function: " + data_.time_functions[i].description.str(); },
          [this, i]() -> stored_series& { return data_.time_functions.edit(i); });
    for (std::size_t s = 0; s < data_.systems.size(); ++s) {
      segment_series(s, "Loads", "Load", &system_data_type::loads);
      segment_series(s, "Boundaries", "Boundary", &system_data_type::boundaries);
    }
    field_series("Exchange", "exchange", data_.exchange_fields);
    field_series("Flow", "flow", data_.flow_fields);
  }

private:
  static std::size_t count(const prevesk_dataset_data_type& data) {
    std::size_t total = 2 + data.time_functions.size();
    for (const auto& system : data.systems) total += system.loads.size() + system.boundaries.size();
    for (const auto& field : data.exchange_fields) total += field.functions.size();
    for (const auto& field : data.flow_fields) total += field.functions.size();
    return total;
  }

  template <class List>
  void segment_series(std::size_t s, const char* kind, const char* one, List system_data_type::*list) {
    for (std::size_t i = 0; i < (data_.systems[s].*list).size(); ++i) {
      const auto& series = (data_.systems[s].*list)[i];
      visit(
          series,
          [&] {
            return std::string(kind) + " for system '" + data_.systems[s].description.str() +
                   "' segment id: " + std::to_string(series.segment);
          },
          [&] { return std::string(one) + " of " + data_.systems[s].description.str() + in_segment(series.segment); },
          [this, s, i, list]() -> stored_series& { return (data_.systems.edit(s).*list).edit(i); });
    }
  }

  // As a user counts: from 1, and with the segment's name where it has one.
  std::string in_segment(std::int32_t segment) const {
    const auto at = static_cast<std::size_t>(segment);
    const bool inside = segment >= 0 && at < data_.segments.size();
    return " in segment " + std::to_string(std::int64_t{segment} + 1) +
           (inside && !data_.segments[at].name.empty() ? " (" + data_.segments[at].name.str() + ")" : std::string());
  }

  template <class Fields>
  void field_series(const char* kind, const char* field_kind, Fields& fields) {
    for (std::size_t f = 0; f < fields.size(); ++f)
      for (std::size_t i = 0; i < fields[f].functions.size(); ++i)
        visit(
            fields[f].functions[i],
            [&] {
              return std::string(kind) + " function '" + fields[f].functions[i].description.str() + "' for " +
                     field_kind + " field '" + fields[f].description.str() + "'";
            },
            [&fields, f, i]() -> stored_series& { return fields.edit(f).functions.edit(i); });
  }

  // `make_label` gives the label of a failure, which counts segments from 0, `make_name` that of a success, `edit` the
  // series for changing. They are only asked for one that has a query to run: the others, tens of thousands in a large
  // model, go on sharing their points.
  template <class MakeLabel, class Edit>
  void visit(const stored_series& series, const MakeLabel& make_label, const Edit& edit) {
    visit(series, make_label, make_label, edit);
  }
  template <class MakeLabel, class MakeName, class Edit>
  void visit(const stored_series& series, const MakeLabel& make_label, const MakeName& make_name, const Edit& edit) {
    if (series.query->deferred) {
      const std::string label = make_label();
      try {
        point_list points = series.points;
        const query_report report = execute_(*series.query, data_, points);
        progress_.executed(make_name(), *series.query, report);
        stored_series& target = edit();
        target.points = std::move(points);
        if (clear_flags_) target.query.edit().deferred = false;
      } catch (const query_exception& error) {
        throw live_query_exception("Live query for time series \"" + label + "\" failed: " + error.what());
      }
    }
    done_ += 1.0;
    const auto percent = static_cast<int>(done_ / static_cast<double>(total_) * 100);
    if (std::exchange(percent_, percent) != percent) progress_.percent_done(percent);
  }

  prevesk_dataset_data_type& data_;
  const query_executor& execute_;
  query_progress& progress_;
  const bool clear_flags_;
  const std::size_t total_;
  double done_ = 0;
  int percent_ = -1; // as told last
};

} // namespace

void execute_deferred_queries(prevesk_dataset_data_type& data_set, const query_executor& execute,
                              query_progress& progress, bool clear_flags) {
  walk(data_set, execute, progress, clear_flags).all();
}

} // namespace vesk
