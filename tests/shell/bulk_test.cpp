// The bulk time-series service: values known by hand, and the fast table against the plain algorithm, bit by bit.
#include "idle_job.h"
#include "shell/bulk/bulk_kernels.h"
#include "shell/bulk/bulk_reference.h"
#include "shell/bulk/bulk_service.h"
#include "shell/bulk/bulk_table.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <random>

namespace vesk {
namespace {

using testing::ElementsAre;

constexpr std::int32_t start_day = 146097;
constexpr float untouched = -7;

constexpr float* registered_arrays::*places[bulk_stage_count] = {
    &registered_arrays::time_functions, &registered_arrays::loads,     &registered_arrays::boundary_conditions,
    &registered_arrays::flows,          &registered_arrays::exchanges, &registered_arrays::print_interval};

// A point so many days after the start.
moment_value_pair_type at(double day, double value) {
  const double whole = std::floor(day);
  return {{start_day + static_cast<std::int32_t>(whole), static_cast<std::int32_t>((day - whole) * 86400)}, value};
}

// Three segments, two systems, all arrays larger than they need be.
struct bulk_job : idle_job {
  bulk_job() {
    data.seed_date = at(0, 0).date_time();
    data.seed_time = 0;
    data.systems.resize(2);
    for (std::uint32_t s = 0; s < 2; ++s) data.systems.edit(s).isc = s + 1;
    data.resize_segments(3);
  }
  void set_simulation_time(double date_time) override { told_time = date_time; }
  bool has_log() const override { return with_log; }
  void add_time_function(std::uint32_t isc, point_list points, std::uint32_t interpolation = 0, bool used = true) {
    time_function_data_type function;
    function.isc = isc;
    function.points = std::move(points);
    function.interpolation_type = interpolation;
    function.used = used;
    data.time_functions.push_back(function);
  }
  // Registers an array of so many elements for the stage.
  void enter(bulk_stage stage, std::size_t size) {
    auto& array = values[static_cast<std::size_t>(stage)];
    array.assign(size, untouched);
    registered.*places[static_cast<std::size_t>(stage)] = array.data();
  }
  void enter_all() {
    for (std::size_t s = 0; s < bulk_stage_count; ++s) enter(static_cast<bulk_stage>(s), 64);
  }
  const std::vector<float>& of(bulk_stage stage) const { return values[static_cast<std::size_t>(stage)]; }

  bool with_log = false;
  double told_time = 0;
  std::array<std::vector<float>, bulk_stage_count> values;
};

template <class Series>
Series series(std::int32_t segment, double value) {
  Series result;
  result.segment = segment;
  result.points = {at(0, value)};
  return result;
}

template <class Function>
Function function(double value) {
  Function result;
  result.points = {at(0, value)};
  return result;
}

TEST(BulkService, GivesTheValuesThatFollowFromThePoints) {
  const point_list ramp = {at(0, 1), at(10, 3)};
  const point_list jump = {at(0, 1), at(5, 1), at(5, 9), at(10, 9)};
  const double inf = std::numeric_limits<double>::infinity();
  struct {
    const char* what;
    std::uint32_t interpolation;
    point_list points;
    std::vector<float> days;
    std::vector<float> expected;
  } const rows[] = {
      {"linear", 0, ramp, {-1, 5, 7.5f, 10, 11}, {1, 2, 2.5f, 3, 3}},
      {"step", 1, ramp, {-1, 0, 5, 10, 11}, {1, 1, 1, 3, 3}},
      {"any other number is a step", 7, ramp, {5}, {1}},
      {"at a point the next interval begins", 1, {at(0, 1), at(5, 2), at(10, 3)}, {4.5f, 5, 10}, {1, 2, 3}},
      {"one update passes several points", 0, {at(0, 0), at(1, 8), at(2, 4), at(4, 0)}, {0.5f, 3, 9}, {4, 2, 0}},
      {"from before the first point past the last", 0, ramp, {-1, 12, 13}, {1, 3, 3}},
      {"one point", 0, {at(3, 4)}, {0, 3, 9}, {4, 4, 4}},
      {"no points", 0, {}, {0, 5}, {0, 0}},
      {"a vertical step", 0, jump, {4.5f, 5, 6}, {1, 9, 9}},
      {"out of order", 0, {at(0, 1), at(10, 3), at(5, 7)}, {5, 12}, {2, 7}},
      {"out of order, first looked at late", 0, {at(0, 1), at(10, 3), at(5, 7), at(20, 9)}, {12}, {7.9333334f}},
      {"the marker of a cursor as last value", 1, {at(0, 1), at(5, 2), at(10, cursor_unset)}, {1, 12}, {1, 2}},
      {"minus zero is kept", 1, {at(0, -0.0), at(5, -0.0)}, {-1, 1, 6}, {-0.0f, -0.0f, -0.0f}},
      {"infinite", 1, {at(0, inf), at(5, -inf)}, {1, 6}, {static_cast<float>(inf), static_cast<float>(-inf)}},
  };
  for (const auto& row : rows)
    for (const bool plainly : {false, true}) {
      bulk_job job;
      job.add_time_function(1, row.points, row.interpolation);
      job.enter(bulk_stage::time_functions, 1);
      bulk_service service;
      for (std::size_t i = 0; i < row.days.size(); ++i) {
        service.update(job, row.days[i]);
        if (plainly) service.series_changing(job.data);
        const float value = job.of(bulk_stage::time_functions)[0];
        EXPECT_EQ(value, row.expected[i]) << row.what << ", day " << row.days[i] << (plainly ? ", plainly" : "");
        EXPECT_EQ(std::signbit(value), std::signbit(row.expected[i])) << row.what;
        EXPECT_EQ(job.told_time, job.data.seed_date + static_cast<double>(row.days[i]));
      }
    }
}

TEST(BulkService, FillsTheElementsOfEachKind) {
  for (const bool plainly : {false, true}) {
    bulk_job job;
    job.add_time_function(2, {at(0, 5)});
    job.add_time_function(4, {at(0, 6)}, 0, false);
    job.add_time_function(0, {at(0, 7)});
    auto& first = job.data.systems.edit(0);
    first.loads = {series<loads_data_type>(0, 1), series<loads_data_type>(2, 2), series<loads_data_type>(0, 3),
                   series<loads_data_type>(3, 4)};
    job.data.systems.edit(1).loads = {series<loads_data_type>(1, 5), series<loads_data_type>(-1, 6)};
    first.boundaries = {series<boundary_data_type>(1, 8)};
    job.data.flow_fields.resize(7);
    job.data.flow_fields.edit(0).functions = {function<flow_function_data_type>(1),
                                              function<flow_function_data_type>(2)};
    for (const std::size_t field : {1u, 5u, 6u})
      job.data.flow_fields.edit(field).functions = {function<flow_function_data_type>(3)};
    for (const std::size_t field : {0u, 5u, 6u}) job.data.flow_fields.edit(field).used = true;
    job.data.exchange_fields.edit(1).functions = {function<exchange_function_data_type>(4)};
    job.data.exchange_fields.edit(1).used = true;
    job.data.print_intervals.points = {at(0, 0.5), at(2, 1)};
    for (std::size_t s = 0; s < bulk_stage_count; ++s) job.enter(static_cast<bulk_stage>(s), 8);

    std::vector<std::string> log;
    bulk_service service([&](std::string_view line) { log.emplace_back(line); });
    for (const float days : {0.0f, 1.0f, 2.0f}) {
      service.update(job, days);
      if (plainly) service.series_changing(job.data);
    }
    constexpr float no = untouched;
    EXPECT_THAT(job.of(bulk_stage::time_functions), ElementsAre(no, 5, no, 0, no, no, no, no));
    EXPECT_THAT(job.of(bulk_stage::loads), ElementsAre(3, no, no, 5, 2, no, no, no));
    EXPECT_THAT(job.of(bulk_stage::boundary_conditions), ElementsAre(no, no, 8, no, no, no, no, no));
    EXPECT_THAT(job.of(bulk_stage::flows), ElementsAre(1, no, no, no, no, 3, 2, no));
    EXPECT_THAT(job.of(bulk_stage::exchanges), ElementsAre(no, 4, no, no, no, no, no, no));
    EXPECT_THAT(job.of(bulk_stage::print_interval), ElementsAre(1, no, no, no, no, no, no, no));
    EXPECT_THAT(log, ElementsAre("WARNING: Time function 3, \"\", has no ISC number and is ignored.",
                                 "WARNING: A load at segment 4 of system 1 is outside the model and is ignored.",
                                 "WARNING: Flow field 7 is beyond the six fields of the engine and is ignored."));
  }
}

TEST(BulkService, NamesTheSegmentOfALoadThatIsLeftOut) {
  bulk_job job;
  job.data.segments.edit(2).name = "Weir";
  job.data.systems.edit(1).isc = 9; // beyond the two systems
  job.data.systems.edit(1).loads = {series<loads_data_type>(2, 1)};
  job.enter_all();
  std::vector<std::string> log;
  bulk_service([&](std::string_view line) { log.emplace_back(line); }).update(job, 0);
  EXPECT_THAT(log, ElementsAre("WARNING: A load at segment 3 (Weir) of system 9 is outside the model and is "
                               "ignored."));
}

TEST(BulkService, CountsMillisecondsOfWhatIsRegistered) {
  bulk_job job;
  job.add_time_function(1, point_list(300'000, at(0, 1))); // of one moment, so scanned at each update
  job.data.systems.edit(0).loads = {series<loads_data_type>(0, 1)};
  job.data.systems.edit(0).loads.edit(0).points = {at(0, 0), at(10, 10)};
  std::vector<std::string> log;
  bulk_service service([&](std::string_view line) { log.emplace_back(line); });
  service.update(job, 5);
  service.series_changing(job.data);
  EXPECT_EQ(job.data.systems[0].loads[0].cursor_next.value, cursor_unset);

  job.enter(bulk_stage::time_functions, 1);
  service.update(job, 6); // nothing is measured without a log
  EXPECT_EQ(service.milliseconds()[0], 0u);
  job.with_log = true;
  for (int i = 0; i < 10'000 && service.milliseconds()[0] == 0; ++i) service.update(job, 6);
  EXPECT_GT(service.milliseconds()[0], 0u);
  EXPECT_EQ(service.milliseconds()[1], 0u);
  service.log_metrics();
  EXPECT_THAT(log, ElementsAre("RUNTIME PERFORMANCE METRICS FOLLOW:",
                               "time function interpolation: " + std::to_string(service.milliseconds()[0]) + " ms",
                               "loads interpolation: 0 ms", "boundary conditions interpolation: 0 ms",
                               "flows interpolation: 0 ms", "exchanges interpolation: 0 ms",
                               "print interval interpolation: 0 ms"));
}

class random_series {
public:
  explicit random_series(unsigned seed) : random_(seed) {}

  int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }
  bool one_in(int n) { return below(n) == 0; }
  std::uint32_t interpolation() { return static_cast<std::uint32_t>(below(3)); }

  // Mostly in order; some empty, short, with equal moments, out of order, or with values that are hard to keep.
  point_list points() {
    const double hard[] = {0.0, -0.0, 1e-320, 1e300, INFINITY, -INFINITY, NAN, -NAN, cursor_unset};
    const bool hard_values = one_in(5), equal = one_in(6), unsorted = one_in(6);
    point_list result;
    std::int32_t second = below(20) * 86400 / 4;
    for (int left = one_in(4) ? below(3) : below(40); left > 0; --left) {
      const double value = hard_values && one_in(3) ? hard[below(9)] : below(1000) / 7.0;
      result.push_back({{start_day + second / 86400, second % 86400}, value});
      if (!(equal && one_in(3))) second += 1 + below(3 * 86400);
      if (unsorted && one_in(3)) second = below(20 * 86400);
    }
    return result;
  }

  void fill(bulk_job& job) {
    for (std::uint32_t isc = 0; isc < 12; ++isc) job.add_time_function(isc, points(), interpolation(), !one_in(4));
    for (std::size_t s = 0; s < 2; ++s) {
      fill(job.data.systems.edit(s).loads);
      fill(job.data.systems.edit(s).boundaries);
    }
    for (std::size_t f = 0; f < 6; ++f) fill_field(job.data.flow_fields.edit(f));
    for (std::size_t f = 0; f < 2; ++f) fill_field(job.data.exchange_fields.edit(f));
    job.data.print_intervals.points = points();
  }

private:
  template <class Record>
  void fill(shared_list<Record>& list) {
    for (int left = below(12); left > 0; --left) {
      Record record;
      record.segment = below(5) - 1;
      record.points = points();
      record.interpolation_type = interpolation();
      list.push_back(record);
    }
  }
  template <class Field>
  void fill_field(Field& field) {
    field.used = !one_in(3);
    field.functions.resize(static_cast<std::size_t>(below(5)));
    for (std::size_t i = 0; i < field.functions.size(); ++i) {
      field.functions.edit(i).points = points();
      field.functions.edit(i).interpolation_type = interpolation();
    }
  }

  std::mt19937 random_;
};

bool same_bits(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

testing::AssertionResult same_cursors(const series_cursors& a, const series_cursors& b) {
  const auto same = [](const moment_value_pair_type& p, const moment_value_pair_type& q) {
    return std::memcmp(&p, &q, sizeof p) == 0;
  };
  if (same(a.cursor_next, b.cursor_next) && same(a.cursor_previous, b.cursor_previous) &&
      a.cursor_index == b.cursor_index)
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << "positions " << a.cursor_index << " and " << b.cursor_index << ", values "
                                     << a.cursor_next.value << " and " << b.cursor_next.value;
}

void expect_same_cursors(const prevesk_dataset_data_type& a, const prevesk_dataset_data_type& b) {
  const auto compare = [](const auto& x, const auto& y) {
    for (std::size_t i = 0; i < x.size(); ++i) EXPECT_TRUE(same_cursors(x[i], y[i])) << "series " << i;
  };
  compare(a.time_functions, b.time_functions);
  for (std::size_t s = 0; s < a.systems.size(); ++s) {
    compare(a.systems[s].loads, b.systems[s].loads);
    compare(a.systems[s].boundaries, b.systems[s].boundaries);
  }
  for (std::size_t f = 0; f < 6; ++f) compare(a.flow_fields[f].functions, b.flow_fields[f].functions);
  for (std::size_t f = 0; f < 2; ++f) compare(a.exchange_fields[f].functions, b.exchange_fields[f].functions);
  EXPECT_TRUE(same_cursors(a.print_intervals, b.print_intervals));
}

// Each data set is run through twice, fast and plain. On the way arrays come and go, a PUT changes a series, time goes
// back or is not a number.
TEST(BulkService, DoesAsThePlainAlgorithmDoesBitForBit) {
  for (unsigned seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    random_series random(seed);
    bulk_job fast;
    random.fill(fast);
    bulk_job plain;
    plain.data = fast.data;
    fast.enter_all();
    plain.enter_all();
    const registered_arrays all = plain.registered;
    float* const late = fast.registered.flows;
    fast.registered.flows = plain.registered.flows = nullptr;
    const int arrival = random.below(20), absence = random.below(40), change = random.below(60),
              jump = random.below(80);
    std::optional<bulk_service> service(std::in_place);
    double days = -5 + random.below(20);
    for (int step = 0; step < 40; ++step) {
      days += random.one_in(8) ? random.below(10) : random.below(100) / 100.0;
      if (step == arrival) fast.registered.flows = late, plain.registered.flows = all.flows;
      if (step == absence) fast.registered.loads = plain.registered.loads = nullptr;
      if (step == jump) days = random.one_in(4) ? NAN : days - random.below(10);
      if (step == change) {
        service->series_changing(fast.data);
        expect_same_cursors(fast.data, plain.data);
        if (seed % 2) service.emplace(); // begins on cursors that are set
        for (bulk_job* job : {&fast, &plain}) job->data.time_functions.edit(5).points.push_back(at(300, 1));
      }
      const auto moment = static_cast<float>(days);
      service->update(fast, moment);
      for (std::size_t s = 0; s < bulk_stage_count; ++s) {
        float* const array = plain.registered.*places[s];
        if (array)
          update_stage(plain.data, static_cast<bulk_stage>(s),
                       plain.data.start_date_time() + static_cast<double>(moment), array, [](auto&&) {});
        ASSERT_TRUE(same_bits(fast.values[s], plain.values[s])) << "stage " << s << ", step " << step;
      }
      if (std::isnan(days)) break;
    }
    service->series_changing(fast.data);
    expect_same_cursors(fast.data, plain.data);
  }
}

TEST(BulkTable, EveryKernelGivesTheSameBitsOverManyChunks) {
  constexpr std::size_t count = 3'000;
  for (const bulk_kernel_choice& kernel : bulk_kernels()) {
    if (!kernel.run) continue; // not on this processor
    random_series random(99);
    bulk_table table(kernel.run);
    std::vector<std::pair<std::size_t, time_series_block>> all(count);
    for (auto& [element, record] : all) {
      element = static_cast<std::size_t>(random.below(count));
      record.points = random.points();
      record.interpolation_type = random.interpolation();
      table.add(element, record.points, record.interpolation_type != 0, record);
    }
    table.finish();
    std::vector<float> fast(count, untouched), plain(count, untouched);
    for (double t = at(-3, 0).date_time(); t < at(70, 0).date_time(); t += random.one_in(3) ? 0.01 : 1.0) {
      table.update(t, fast.data());
      for (auto& [element, record] : all)
        plain[element] = static_cast<float>(evaluate_series(record.points, record.interpolation_type != 0, record, t));
      ASSERT_TRUE(same_bits(fast, plain)) << kernel.name;
    }
  }
}

} // namespace
} // namespace vesk
