// One engine call against an ordered set of records that reads a steady clock before and after the handler.
//
// Both sides call the same handlers for the same job, so they differ only in finding the keyword and measuring the
// time.
#include "noting_job.h"
#include "ratio_table.h"
#include "shell/keywords/keyword_table.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <random>
#include <set>

namespace vesk::bench {
namespace {

// The peer: a record per keyword in a std::set, looked up with a temporary record.
class ordered_set_shell {
public:
  explicit ordered_set_shell(shell_interface& shell) : shell_(shell) {
    for (const keyword_row& row : keyword_table) functions_.insert({std::string(row.keyword), row.handler.call, 0});
  }

  void call(const char* name, void* a1, void* a2, void* a3, void* a4, void* a5) {
    shell_.is_get = name[0] == 'G' || name[0] == 'g';
    record key;
    key.keyword = name + 1;
    const auto found = functions_.find(key);
    if (found == functions_.end()) return;
    const auto before = std::chrono::steady_clock::now();
    found->handler(shell_, {a1, a2, a3, a4, a5});
    const auto elapsed = std::chrono::steady_clock::now() - before;
    found->elapsed_ms += std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count();
  }

private:
  struct record {
    std::string keyword;
    keyword_handler handler = nullptr;
    mutable std::int64_t elapsed_ms = 0;
    bool operator<(const record& other) const { return keyword < other.keyword; }
  };
  std::set<record> functions_;
  shell_interface& shell_;
};

// A GET of one keyword with its own arguments, initially all 1.
struct prepared_call {
  std::string name;
  keyword_handler handler = nullptr;
  union {
    std::int32_t integer;
    float real;
    char text[256];
  } words[max_variables];
};

// `scalars`: only those whose handlers just return one number.
std::vector<prepared_call> all_gets(bool scalars) {
  std::vector<prepared_call> calls;
  for (const keyword_row& row : keyword_table) {
    if (scalars && (row.variables.size() != 1 || row.variables[0].type == STRING)) continue;
    if (!(row.modes & get) || !row.handler.call || row.keyword.starts_with("SPRINTF")) continue;
    prepared_call& made = calls.emplace_back();
    std::memset(&made.words, 0, sizeof made.words);
    made.name = "G" + std::string(row.keyword);
    made.handler = row.handler.call;
    for (auto& word : made.words) word.integer = 1;
  }
  return calls;
}

// The calls and their order.
struct scenario {
  const char* name;
  bool scalars;
  std::vector<prepared_call*> (*order)(std::vector<prepared_call>& calls);
};

// The order of an engine reading its input: one keyword for many items, then the next.
std::vector<prepared_call*> engine_order(std::vector<prepared_call>& calls) {
  std::vector<prepared_call*> order;
  for (prepared_call& call : calls) order.insert(order.end(), 64, &call);
  return order;
}

std::vector<prepared_call*> random_order(std::vector<prepared_call>& calls) {
  std::vector<prepared_call*> order = engine_order(calls);
  std::shuffle(order.begin(), order.end(), std::mt19937(7));
  return order;
}

constexpr const char* seconds_a_call = "seconds a call";

// Makes each call of `what` once per iteration: call(prepared, words...).
template <class Call>
void make_calls(benchmark::State& state, const scenario& what, Call call) {
  std::vector<prepared_call> calls = all_gets(what.scalars);
  const std::vector<prepared_call*> order = what.order(calls);
  for (auto _ : state)
    for (prepared_call* made : order) {
      auto& w = made->words;
      call(*made, &w[0], &w[1], &w[2], &w[3], &w[4]);
    }
  using benchmark::Counter;
  state.counters[seconds_a_call] =
      Counter(static_cast<double>(order.size()), Counter::kIsIterationInvariantRate | Counter::kInvert);
}

void run_callback(benchmark::State& state, const scenario& what) {
  noting_job job(false);
  const engine_job_scope serving(job);
  make_calls(state, what, [](prepared_call& call, auto... words) { data_callback(call.name.c_str(), words...); });
}

void run_ordered_set(benchmark::State& state, const scenario& what) {
  noting_job job(false);
  const engine_job_scope serving(job);
  ordered_set_shell peer(job.shell());
  make_calls(state, what, [&](prepared_call& call, auto... words) { peer.call(call.name.c_str(), words...); });
}

// The handlers alone, called through their addresses.
void run_handlers(benchmark::State& state, const scenario& what) {
  noting_job job(false);
  const engine_job_scope serving(job);
  job.shell().is_get = true;
  make_calls(state, what, [&](prepared_call& call, auto... words) { call.handler(job.shell(), {words...}); });
}

// Both sides must give the same answers.
bool answers_agree() {
  noting_job job(false);
  const engine_job_scope serving(job);
  ordered_set_shell peer(job.shell());
  std::vector<prepared_call> ours = all_gets(false), theirs = all_gets(false);
  std::size_t differ = 0;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    auto& a = ours[i].words;
    auto& b = theirs[i].words;
    data_callback(ours[i].name.c_str(), &a[0], &a[1], &a[2], &a[3], &a[4]);
    peer.call(theirs[i].name.c_str(), &b[0], &b[1], &b[2], &b[3], &b[4]);
    differ += std::memcmp(&a, &b, sizeof a) != 0 ? 1 : 0;
  }
  std::printf("%zu of 157 keywords are called with GET; %zu answers differ\n", ours.size(), differ);
  return differ == 0 && ours.size() > 100;
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  if (!answers_agree()) return 1;
  std::vector<ratio_row> rows;
  for (const scenario& what :
       {scenario{"scalars, in engine order", true, &engine_order}, scenario{"scalars, at random", true, &random_order},
        scenario{"all keywords, in engine order", false, &engine_order},
        scenario{"all keywords, at random", false, &random_order}}) {
    const std::string name = what.name;
    benchmark::RegisterBenchmark((name + "/vesk").c_str(), run_callback, what);
    benchmark::RegisterBenchmark((name + "/ordered_set").c_str(), run_ordered_set, what);
    benchmark::RegisterBenchmark((name + "/handlers").c_str(), run_handlers, what);
    const bool in_order = what.order == &engine_order;
    rows.push_back({"callback, " + name + ", against an ordered set", name + "/vesk", name + "/ordered_set",
                    ratio_row::at_least,
                    !what.scalars ? 0.0
                    : in_order    ? 12.0
                                  : 5.0,
                    seconds_a_call});
    rows.push_back({"callback, " + name + ", against the handlers alone", name + "/vesk", name + "/handlers",
                    ratio_row::at_most, 0, seconds_a_call});
  }
  return run_with_ratios(argc, argv, rows);
}
