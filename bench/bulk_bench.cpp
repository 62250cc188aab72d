// One update (a PUT of DAYS) against GSL's linear interpolation with its accelerator, and against the plain algorithm.
// Both kinds of updates are compared float by float before the timing.
#include "bulk_series_data.h"
#include "core/forcing_line.h"
#include "gsl_series.h"
#include "idle_job.h"
#include "ratio_table.h"
#include "shell/bulk/bulk_kernels.h"
#include "shell/bulk/bulk_reference.h"
#include "shell/bulk/bulk_service.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <numeric>

namespace vesk::bench {
namespace {

constexpr double five_minutes = 1.0 / 288;
constexpr double one_hour = 1.0 / 24;

const std::vector<series_plan> plans = {
    {"mixed_5min/1e3", 1'000, 366, 8784, five_minutes, 20'000},
    {"mixed_5min/1e4", 10'000, 366, 8784, five_minutes, 2'000},
    {"mixed_5min/1e5", 100'000, 366, 8784, five_minutes, 200}, // 8 GB: only on request
    {"daily_5min/1e5", 100'000, 366, 366, five_minutes, 300},
    {"hourly_1h/1e3", 1'000, 8784, 8784, one_hour, 5'000},
    {"hourly_1h/1e4", 10'000, 8784, 8784, one_hour, 600},
};

// The series of a plan, created on first use and kept.
struct workload {
  explicit workload(const series_plan& plan) : data(make_series(plan)), elements(plan.count / 2) {}
  const prevesk_dataset_data_type data;
  const std::size_t elements; // of each array

  gsl_series& gsl() {
    if (!gsl_) gsl_ = std::make_unique<gsl_series>(data);
    return *gsl_;
  }

private:
  std::unique_ptr<gsl_series> gsl_;
};

workload& workload_of(const series_plan& plan) {
  static std::map<std::string, std::unique_ptr<workload>> all;
  auto& made = all[plan.name];
  if (!made) made = std::make_unique<workload>(plan);
  return *made;
}

// The engine's side.
struct engine_side : idle_job {
  explicit engine_side(const workload& work) : loads(work.elements), boundary_conditions(work.elements) {
    data = work.data;
    registered.loads = loads.data();
    registered.boundary_conditions = boundary_conditions.data();
  }
  std::vector<float> loads;
  std::vector<float> boundary_conditions;
};

float days_of(const series_plan& plan, int update) {
  return static_cast<float>(first_update + plan.step * update);
}

void update_plainly(engine_side& job, float days) {
  const double t = job.data.start_date_time() + static_cast<double>(days);
  update_stage(job.data, bulk_stage::loads, t, job.registered.loads, {});
  update_stage(job.data, bulk_stage::boundary_conditions, t, job.registered.boundary_conditions, {});
}

// Times `plan.updates` calls of update(days) after one that is not timed.
template <class Update>
void run(benchmark::State& state, const series_plan& plan, Update update) {
  update(days_of(plan, 0));
  int n = 0;
  for (auto _ : state) update(days_of(plan, ++n));
}

void run_service(benchmark::State& state, const series_plan& plan) {
  engine_side job(workload_of(plan));
  bulk_service service;
  run(state, plan, [&](float days) { service.update(job, days); });
}

void run_plain(benchmark::State& state, const series_plan& plan) {
  engine_side job(workload_of(plan));
  run(state, plan, [&](float days) { update_plainly(job, days); });
}

// What the bundled engine does between two hourly events: two updates, never at an end of the hour, from which it
// computes the values in the middle of the hour.
void run_forcing(benchmark::State& state, const series_plan& plan) {
  const workload& work = workload_of(plan);
  engine_side job(work);
  reference_engine::Forcing forcing;
  forcing.loads.resize(work.elements);
  forcing.boundaries.resize(work.elements);
  job.registered.loads = forcing.loads.data();
  job.registered.boundary_conditions = forcing.boundaries.data();
  reference_engine::UsedElements used;
  used.loads.resize(work.elements);
  std::iota(used.loads.begin(), used.loads.end(), std::size_t{0});
  used.boundaries = used.loads;
  reference_engine::ForcingLine line(used);
  bulk_service service;
  run(state, plan, [&](float days) {
    const auto sample = [&](double share) {
      const auto day = static_cast<float>(static_cast<double>(days) + share * plan.step);
      service.update(job, day);
      return static_cast<double>(day);
    };
    line.take_first(forcing, sample(0.25));
    line.take_second(forcing, sample(0.75));
    benchmark::DoNotOptimize(line.move_to(static_cast<double>(days) + 0.5 * plan.step));
  });
}

void run_gsl(benchmark::State& state, const series_plan& plan) {
  workload& work = workload_of(plan);
  engine_side job(work);
  gsl_series& gsl = work.gsl();
  gsl.reset();
  run(state, plan, [&](float days) {
    gsl.update(job.data.start_date_time() + static_cast<double>(days), job.loads.data(),
               job.boundary_conditions.data());
  });
}

// The lower bound: reading as many bytes as an update touches (a row of 32 bytes and its position) and writing the
// float.
void run_stream(benchmark::State& state, const series_plan& plan) {
  const std::size_t rows = plan.count;
  std::vector<double> bytes(rows * 4, 1.0);
  std::vector<float> places(rows, 1.0f);
  std::vector<float> out(rows);
  run(state, plan, [&](float days) {
    const double* in = bytes.data();
    for (std::size_t i = 0; i < rows; i += 8) {
      for (std::size_t k = 0; k < 8; ++k)
        out[i + k] = static_cast<float>(in[8 * 0 + k] + in[8 * 1 + k] + in[8 * 2 + k] + in[8 * 3 + k]) + places[i + k];
      in += 32;
    }
    out[0] += days;
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  });
}

// In addition to the series.
void run_fixed_cost(benchmark::State& state) {
  idle_job job;
  float one = 0;
  job.registered.print_interval = &one;
  bulk_service service;
  float days = 0;
  for (auto _ : state) service.update(job, days += 1e-6f);
}

std::size_t differing(const std::vector<float>& a, const std::vector<float>& b) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.size(); ++i) count += std::memcmp(&a[i], &b[i], sizeof(float)) != 0 ? 1 : 0;
  return count;
}

std::size_t far_apart(const std::vector<float>& a, const std::vector<float>& b) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.size(); ++i) count += !(std::fabs(a[i] - b[i]) <= 1e-6f) ? 1 : 0;
  return count;
}

// Compares the three over a run of each kind. GSL's formula rounds differently.
bool all_agree() {
  bool agree = true;
  for (series_plan plan : plans) {
    plan.count = 1'000;
    workload work(plan);
    engine_side fast(work), plain(work), peer(work);
    bulk_service service;
    std::size_t differ = 0, far = 0;
    for (int n = 0; n < 1'000; ++n) {
      const float days = days_of(plan, n * 6);
      service.update(fast, days);
      update_plainly(plain, days);
      work.gsl().update(fast.data.start_date_time() + static_cast<double>(days), peer.loads.data(),
                        peer.boundary_conditions.data());
      differ += differing(fast.loads, plain.loads) + differing(fast.boundary_conditions, plain.boundary_conditions);
      far += far_apart(fast.loads, peer.loads) + far_apart(fast.boundary_conditions, peer.boundary_conditions);
    }
    std::printf("%s: of 1000000 floats %zu differ from the plain algorithm, %zu by more than 1e-6 from GSL\n",
                plan.name.c_str(), differ, far);
    agree = agree && differ == 0 && far == 0;
  }
  return agree;
}

void add(std::vector<ratio_row>& rows, const series_plan& plan) {
  const std::string suffix = "/iterations:" + std::to_string(plan.updates);
  const auto name = [&](const char* who) { return plan.name + "/" + who; };
  const auto enter = [&](const char* who, void (*function)(benchmark::State&, const series_plan&)) {
    benchmark::RegisterBenchmark(name(who).c_str(), function, plan)->Iterations(plan.updates);
    return name(who) + suffix;
  };
  const std::string ours = enter("vesk", &run_service);
  const std::string gsl = enter("gsl", &run_gsl);
  const std::string plain = enter("plain", &run_plain);
  const std::string stream = enter("stream", &run_stream);
  const bool all_move = plan.step == one_hour;
  if (all_move)
    rows.push_back({"an hour of hourly series in the engine, " + plan.name + ", against one update",
                    enter("forcing", &run_forcing), ours, ratio_row::at_most, 2.5});
  rows.push_back({"update, " + plan.name + ", against GSL", ours, gsl, ratio_row::at_least, all_move ? 10.0 : 12.0});
  rows.push_back({"update, " + plan.name + ", against the plain algorithm", ours, plain, ratio_row::at_least});
  if (plan.count == 100'000)
    rows.push_back({"update, " + plan.name + ", against reading its bytes", ours, stream, ratio_row::at_most, 1.5});
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  for (const vesk::bulk_kernel_choice& kernel : vesk::bulk_kernels())
    std::printf("kernel %s: %s\n", kernel.name, kernel.run ? "there" : "not on this machine");
  if (!all_agree()) return 1;
  std::vector<ratio_row> rows;
  for (const series_plan& plan : plans) add(rows, plan);
  benchmark::RegisterBenchmark("fixed_cost", run_fixed_cost);
  return run_with_ratios(argc, argv, rows);
}
