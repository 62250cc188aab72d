// Transport against solutions that are known.
#include "core/block_lu.h"
#include "core/errors.h"
#include "models.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <new>
#include <numbers>
#include <random>
#include <set>

namespace reference_engine {
namespace {

enum { conservative, decaying, solids };

// Implicit BDF is held to its local errors of 1e-8; over a run they add up to some ten times that.
constexpr double bdf_error = 3e-7;

// dC/dt = -(Q/V) C. Euler's error after n steps over one residence time is e^-1 / (2 n) to first order; that of
// Runge-Kutta e^-1 / (120 n^4).
TEST(Transport, OneMixedSegmentIsWashedOut) {
  Model model(1);
  model.through(0.25);
  model.initial(conservative, 0) = 8;
  const double expected = 8 * std::exp(-1.0);
  EXPECT_NEAR(model.run(euler, 4, 1000).of(conservative)[0], expected - expected / 2000, expected * 1e-6);
  EXPECT_NEAR(model.run(runge_kutta, 4, 100).of(conservative)[0], expected, expected * 1e-10);
  EXPECT_NEAR(model.run(bdf, 4, 3).of(conservative)[0], expected, expected * bdf_error);
}

// The outlet of n mixed segments after a step at the inlet follows Erlang's distribution:
// 1 - exp(-x) sum over k < n of x^k / k!, x = t Q / V.
TEST(Transport, SegmentsInSeriesFollowErlang) {
  constexpr int n = 5;
  Model model(n);
  model.through(2);
  model.boundary(conservative, 0) = 1;
  const double x = 4.0;
  double term = 1, sum = 0;
  for (int k = 0; k < n; term *= x / ++k) sum += term;
  const double expected = 1 - std::exp(-x) * sum;
  EXPECT_NEAR(model.run(runge_kutta, x / 2, 200).of(conservative)[n - 1], expected, 1e-9);
  EXPECT_NEAR(model.run(euler, x / 2, 20000).of(conservative)[n - 1], expected, 1e-4); // x^2 / (2 steps) at most
  EXPECT_NEAR(model.run(bdf, x / 2, 4).of(conservative)[n - 1], expected, bdf_error);
}

// dC/dt = E d2C/dx2 between closed ends: the first cosine decays with E (pi / length)^2. Central differences are of
// second order, so twice as many segments leave a quarter of the error.
TEST(Transport, CosineProfileDecaysByDispersion) {
  const auto error = [](int n) {
    Model model(static_cast<std::size_t>(n));
    const double dx = 1.0 / n, dispersion = 1 / (std::numbers::pi * std::numbers::pi); // decays with 1/day
    for (int i = 0; i < n; ++i) {
      model.problem.segments[static_cast<std::size_t>(i)].volume = dx;
      model.initial(conservative, static_cast<std::size_t>(i)) = 2 + std::cos(std::numbers::pi * (i + 0.5) * dx);
      if (i > 0) model.exchange(i - 1, i, dispersion / dx);
    }
    const State state = model.run(runge_kutta, 1, 4 * n * n / 10);
    return state.of(conservative)[0] - 2 - std::exp(-1.0) * std::cos(std::numbers::pi * 0.5 * dx);
  };
  const double coarse = error(20), fine = error(40);
  EXPECT_LT(std::abs(fine), 1e-3);
  EXPECT_NEAR(coarse / fine, 4, 0.1);
}

// A closed network of 1000 segments: rounds of random flows between random segments, some of which fill one segment
// from another, and random exchanges. Mass stays, and a concentration that is the same everywhere stays so.
TEST(Transport, ClosedNetworkKeepsMassAndUniformity) {
  constexpr int n = 1000;
  std::mt19937 random(7);
  std::uniform_int_distribution<int> segment(0, n - 1);
  std::uniform_real_distribution<double> amount(0.01, 0.2);
  Model model(n);
  for (int k = 0; k < 600; ++k) {
    const int a = segment(random), b = segment(random), c = segment(random);
    const double round = amount(random);
    model.flow(a, b, round);
    model.flow(b, c, round);
    model.flow(c, a, k % 5 == 0 ? round * 0.9 : round);
    model.exchange(segment(random), segment(random), amount(random));
  }
  for (int i = 0; i < n; ++i) model.initial(conservative, static_cast<std::size_t>(i)) = amount(random);
  model.start_all_at(decaying, 3);
  for (const int technique : {euler, runge_kutta, bdf}) {
    for (const bool net : {true, false}) {
      model.problem.net_flows = net;
      const State before(model.problem),
          after = technique == bdf ? model.run(bdf, 0.25, 1) : model.run(technique, 2, 400);
      EXPECT_NEAR(after.mass(conservative) / before.mass(conservative), 1, 1e-12);
      for (const double value : after.of(decaying)) ASSERT_NEAR(value, 3, 3e-12);
    }
  }
}

// Euler tends to Runge-Kutta's answer with its order: half the step, half the difference. Numbered at random, so that
// most neighbours are far terms, and with flows that turn round.
TEST(Transport, TechniquesAgreeOnAnyNumbering) {
  Model model(40);
  for (int i = 0; i < 40; ++i) model.flow((i * 7) % 40, ((i + 1) * 7) % 40, i % 3 == 0 ? 0.5 : 0.8);
  model.flow(5, 20, -0.3);
  model.exchange(3, 30, 0.4);
  model.flow(outside, 11, 0.2);
  model.flow(30, outside, 0.1);
  model.boundary(conservative, 11) = 4;
  for (std::size_t i = 0; i < 40; ++i)
    model.problem.segments[i].volume = 5, model.initial(conservative, i) = double(i % 9);
  const State exact = model.run(runge_kutta, 3, 600);
  const auto difference = [&](int steps) {
    const State state = model.run(euler, 3, steps);
    double largest = 0;
    for (std::size_t i = 0; i < 40; ++i)
      largest = std::max(largest, std::abs(state.of(conservative)[i] - exact.of(conservative)[i]));
    return largest;
  };
  const double coarse = difference(500), fine = difference(1000);
  EXPECT_LT(fine, 2e-3);
  EXPECT_NEAR(coarse / fine, 2, 0.05);
  const State implicit = model.run(bdf, 3, 30);
  for (std::size_t i = 0; i < 40; ++i)
    EXPECT_NEAR(implicit.of(conservative)[i], exact.of(conservative)[i], 8 * bdf_error) << i;
}

// A chain that is longer than what is worked out at once, with loads at the seams. Euler against a plain loop;
// Runge-Kutta, with steady and with changing flows, against the same chain with a far exchange of nothing, which it
// does not divide into tiles; without reactions also by another form of the method, here with sources that change.
TEST(Transport, LongChainsHaveNoSeams) {
  constexpr std::size_t n = 1100;
  constexpr double flow = 3, mixing = 0.4, days = 0.05;
  Model model(n);
  model.through(flow);
  for (int i = 1; i < static_cast<int>(n); ++i) model.exchange(i - 1, i, mixing);
  model.boundary(conservative, 0) = 4;
  for (const std::size_t seam : {255u, 256u, 511u, 512u, 1024u}) model.load(conservative, seam) = 0.001f;
  model.problem.constants = {{1, 0.5}};
  for (std::size_t i = 0; i < n; ++i) {
    model.problem.segments[i].volume = 1 + 0.1 * static_cast<double>(i % 7);
    for (const std::size_t s : {conservative, decaying}) model.initial(s, i) = static_cast<double>((i * 37) % 11);
  }
  const State stepped = model.run(euler, days, 1);
  for (std::size_t i = 0; i < n; ++i) {
    const bool first = i == 0, last = i + 1 == n;
    const auto expected = [&](std::size_t s) {
      const double here = model.initial(s, i);
      const double before = first ? (s == conservative ? 4 : 0) : model.initial(s, i - 1);
      double gain = flow * (before - here) + 1000 * static_cast<double>(model.forcing.loads[i * 3 + s]);
      if (!first) gain += mixing * (before - here);
      if (!last) gain += mixing * (model.initial(s, i + 1) - here);
      return here + days * (gain / model.problem.segments[i].volume - (s == decaying ? 0.5 * here : 0));
    };
    for (const std::size_t s : {conservative, decaying}) ASSERT_NEAR(stepped.of(s)[i], expected(s), 1e-9) << i;
  }

  model.problem.balance_system = decaying;
  const Model in_tiles = model;
  model.exchange(0, static_cast<int>(n) - 1, 0);
  enum Kind { without_reactions, steady, changing, filling, all_kinds };
  for (int kind = without_reactions; kind < all_kinds; ++kind) {
    std::vector<State> ends;
    std::vector<MassBalance> balances;
    for (Model it : {in_tiles, model}) {
      if (kind == without_reactions) it.problem.constants.clear();
      ends.push_back(it.run(runge_kutta, {0, 1, 2}, 40, [&](double day) {
        if (kind == without_reactions) {
          it.boundary(conservative, 0) = static_cast<float>(4 + day);
          it.forcing.loads[256 * 3 + conservative] = static_cast<float>(0.003 - 0.001 * day);
        }
        if (kind <= steady) return;
        for (float& value : it.forcing.flows) value = static_cast<float>(1 + 0.2 * day);
        it.forcing.exchanges[3 * fields_per_function] = static_cast<float>(2 - day);
        if (kind == filling) it.forcing.flows[700 * fields_per_function] = static_cast<float>(1 + 0.1 * day);
      }));
      balances.push_back(it.balance);
    }
    EXPECT_EQ(ends[0].volume != State(model.problem).volume, kind == filling);
    for (std::size_t i = 0; i < n; ++i) ASSERT_NEAR(ends[0].volume[i], ends[1].volume[i], 1e-13) << kind << ' ' << i;
    for (std::size_t k = 0; k < ends[0].concentration.size(); ++k)
      ASSERT_NEAR(ends[0].concentration[k], ends[1].concentration[k], 1e-12) << kind << ' ' << k;
    EXPECT_NEAR(balances[0].moved.reacted, balances[1].moved.reacted, 1e-10) << kind;
    EXPECT_NEAR(balances[0].moved.outflow, balances[1].moved.outflow, 1e-10) << kind;
    EXPECT_NEAR(balances[0].relative_error(), 0, 1e-12) << kind;
  }
}

// What serves instead of a search must never be longer than the limit that a search finds, whatever flows and volumes
// do on the line; and where it is shorter it must still be enough.
TEST(Transport, LimitWithoutASearchIsSafe) {
  std::mt19937 random(5);
  const auto number = [&random](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
  int spared = 0;
  for (int round = 0; round < 20; ++round) {
    Model model(30);
    for (Segment& segment : model.problem.segments) segment.volume = number(20, 40);
    for (int i = 0; i < 30; ++i) model.flow(i, i < 29 ? i + 1 : outside, 1);
    for (int k = 0; k < 8; ++k) model.flow(static_cast<int>(number(0, 30)), static_cast<int>(number(0, 30)), 1);
    model.flow(outside, 0, 1);
    model.exchange(3, 4, 1);
    Equations equations(model.problem, "tracer"), searched(model.problem, "tracer");
    State state(model.problem);
    const auto draw = [&](double day, bool is_first) {
      for (const FlowPair& pair : model.problem.flows)
        model.forcing.flows[pair.element] = static_cast<float>(number(-1, 1));
      for (Equations* it : {&equations, &searched})
        is_first ? it->forcing().take_first(model.forcing, day) : it->forcing().take_second(model.forcing, day);
    };
    draw(1, true);
    draw(3, false);
    const std::unique_ptr<Integrator> integrator = make_integrator(euler);
    Balances balances(state);
    while (state.day < 3.9) {
      constexpr double days = 0.1;
      const double enough = number(0.1, 15);
      const StepLimit exact = integrator->limit(searched, state, days),
                      limit = integrator->limit(equations, state, days, enough);
      EXPECT_LE(limit.days, exact.days * (1 + 1e-12));
      const bool is_spared = limit.days != exact.days;
      EXPECT_TRUE(!is_spared || limit.days >= enough);
      spared += is_spared ? 1 : 0;
      integrator->step(equations, state, days, balances);
    }
  }
  EXPECT_GT(spared, 100);
}

// Against a matrix that is multiplied out: a river with rings, so that some blocks fill and others do not.
TEST(BlockLu, SolvesWhatItsBlocksSay) {
  std::mt19937 random(3);
  const auto number = [&random](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
  for (const std::size_t size : {1u, 2u, 3u, 4u, 5u}) {
    constexpr std::size_t segments = 20;
    std::vector<BlockLu::Pair> pairs;
    for (std::size_t i = 0; i + 1 < segments; ++i) pairs.push_back({i + i % 2, i + 1 - i % 2}); // either way round
    pairs.insert(pairs.end(), {{0, 9}, {19, 2}, {4, 13}, {5, 9}});
    BlockLu lu(segments, size, pairs);
    for (int round = 0; round < 2; ++round) { // again with other values
      const std::size_t n = segments * size;
      std::vector<double> matrix(n * n), expected(n), right(n, 0.0);
      lu.clear();
      for (std::size_t i = 0; i < segments; ++i)
        for (std::size_t k = 0; k < size; ++k)
          for (std::size_t c = 0; c < size; ++c) // the largest of a column is not on the diagonal
            matrix[(i * size + k) * n + i * size + c] = lu.block(i)[k * size + c] =
                number(-1, 1) + (c == (k + 1) % size ? 9 : 0);
      for (std::size_t p = 0; p < pairs.size(); ++p)
        for (std::size_t k = 0; k < size; ++k) {
          matrix[(pairs[p].a * size + k) * n + pairs[p].b * size + k] = lu.into_a(p, k) = number(-1, 1);
          matrix[(pairs[p].b * size + k) * n + pairs[p].a * size + k] = lu.into_b(p, k) = number(-1, 1);
        }
      for (double& value : expected) value = number(-5, 5);
      for (std::size_t i = 0; i < segments; ++i)
        for (std::size_t k = 0; k < size; ++k)
          for (std::size_t j = 0; j < n; ++j)
            right[lu.place(i) * size + k] += matrix[(i * size + k) * n + j] * expected[j];
      ASSERT_TRUE(lu.factorise());
      lu.solve(right.data());
      for (std::size_t i = 0; i < segments; ++i)
        for (std::size_t k = 0; k < size; ++k)
          EXPECT_NEAR(right[lu.place(i) * size + k], expected[i * size + k], 1e-11) << size;
    }
    lu.clear();
    EXPECT_FALSE(lu.factorise());
  }
}

// Two segments that an exchange mixes in a tenth of a second beside a washout in days: explicit steps are bound to the
// exchange, implicit ones are not. Together they are one mixed segment.
TEST(Transport, StiffNetworkIsSolvedInStepsOfTheSlowProcess) {
  Model model(2);
  model.exchange(0, 1, 1e6);
  model.flow(outside, 0, 0.5);
  model.flow(0, 1, 0.5);
  model.flow(1, outside, 0.5);
  model.initial(conservative, 0) = 8;
  model.problem.balance_system = conservative;
  const State state = model.run(bdf, 4, 4);
  EXPECT_NEAR(state.of(conservative)[0], 4 * std::exp(-1.0), 4 * bdf_error);
  EXPECT_NEAR(state.of(conservative)[1], 4 * std::exp(-1.0), 4 * bdf_error);
  EXPECT_NEAR(model.balance.relative_error(), 0, 1e-8); // 1e6 times the rounding of numbers
}

// As much memory as is left to a process, in steps up to what the run needs, so that each of its larger requests fails
// once: of the solver's own and of CVODE.
TEST(Transport, ImplicitRunShortOfMemoryEndsInOneSentence) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers take address space as they like";
#endif
  enum Outcome { solved = 10, refused };
  Model model(3000);
  model.through(2);
  for (int i = 1; i < 3000; ++i) model.exchange(i - 1, i, 1);
  std::set<int> outcomes;
  for (rlim_t left = 1 << 16; !outcomes.contains(solved) && left < (1 << 28); left += 3 << 16) {
    const pid_t child = fork();
    if (child == 0) {
      malloc_trim(0);
      mallopt(M_MMAP_THRESHOLD, 4096); // what earlier tests have freed is not to serve these requests
      unsigned long long pages = 0;
      std::ifstream("/proc/self/statm") >> pages;
      const rlim_t limit = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + left;
      const rlimit both{limit, limit};
      setrlimit(RLIMIT_AS, &both);
      try {
        model.run(bdf, 1, 1);
        _exit(solved);
      } catch (const std::bad_alloc&) {
        _exit(refused);
      } catch (...) { // another failure: a misleading sentence
        _exit(1);
      }
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status) << " with " << left << " bytes left";
    outcomes.insert(WEXITSTATUS(status));
    ASSERT_NE(WEXITSTATUS(status), 1) << left;
  }
  EXPECT_THAT(outcomes, testing::ElementsAre(solved, refused));
}

// One segment that loses by one field alone: C = exp(-share Q t / V), V constant since the surface water is in balance
// or the field moves no water.
TEST(Transport, FieldsCarryTheirShare) {
  Model model(1);
  model.problem.dissolved = {0.25, 0.25, 0.25};
  for (std::size_t s = 0; s < 3; ++s) model.initial(s, 0) = 1;
  model.problem.systems[solids].solids_field = 1;
  model.problem.systems[decaying].flows = false;

  Model pore = model, second_solids = model, evaporation = model, mixing = model;
  pore.flow(outside, 0, 1, FlowField::pore_water);
  pore.flow(0, outside, 1, FlowField::pore_water);
  State state = pore.run(runge_kutta, 1, 50);
  EXPECT_NEAR(state.of(conservative)[0], std::exp(-0.25), 1e-9);
  EXPECT_DOUBLE_EQ(state.of(decaying)[0], 1); // not carried by flows
  EXPECT_NEAR(state.volume[0], 1, 1e-12);

  second_solids.flow(0, outside, 1, FlowField::solids_2);
  state = second_solids.run(runge_kutta, 1, 50);
  EXPECT_NEAR(state.of(solids)[0], std::exp(-0.75), 1e-9);
  EXPECT_DOUBLE_EQ(state.of(conservative)[0], 1); // goes with the first solids field
  EXPECT_DOUBLE_EQ(state.volume[0], 1);

  evaporation.flow(0, outside, 0.5, FlowField::evaporation);
  state = evaporation.run(euler, 1, 50);
  EXPECT_NEAR(state.volume[0], 0.5, 1e-12);
  EXPECT_NEAR(state.of(conservative)[0], 2, 1e-12);

  mixing.exchange(0, outside, 1, ExchangeField::pore_water);
  mixing.problem.systems[conservative].disperses = false;
  state = mixing.run(runge_kutta, 1, 50);
  EXPECT_NEAR(state.of(solids)[0], std::exp(-0.25), 1e-9);
  EXPECT_DOUBLE_EQ(state.of(conservative)[0], 1);
}

// The share is that of the segment that gives, whichever way a link is numbered.
TEST(Transport, ShareIsTheGivers) {
  Model model(2);
  for (std::size_t s = 0; s < 3; ++s) model.problem.dissolved[model.problem.at(s, 0)] = 0.25;
  for (std::size_t s = 0; s < 3; ++s) model.problem.dissolved[model.problem.at(s, 1)] = 0.6;
  model.start_all_at(conservative, 1);
  Model exchange = model;
  model.flow(1, 0, 1, FlowField::solids_1);
  EXPECT_NEAR(model.run(runge_kutta, 1, 50).of(conservative)[1], std::exp(-0.4), 1e-9);
  exchange.exchange(0, 1, 1, ExchangeField::pore_water);
  const State mixed = exchange.run(runge_kutta, 50, 500); // until the dissolved concentrations are equal
  EXPECT_NEAR(mixed.of(conservative)[0], 2 * 0.6 / 0.85, 1e-9);
}

// 3 m3/day one way and 2 back: 1 m3/day when netted; else an exchange of 2 beside it.
TEST(Transport, FlowsBetweenTheSameSegmentsAreNettedOnRequest) {
  Model model(2);
  model.flow(0, 1, 3);
  model.flow(1, 0, 2);
  Equations net(model.problem, "tracer");
  model.problem.net_flows = false;
  Equations gross(model.problem, "tracer");
  const State state(model.problem);
  for (Equations* it : {&net, &gross}) {
    it->forcing().hold(model.forcing);
    it->move_to(0);
    it->set_volumes(state.volume);
  }
  EXPECT_NEAR(net.limit(state).days, 1.0, 1e-6);
  EXPECT_NEAR(gross.limit(state).days, 1.0 / 3, 1e-6);
}

TEST(Transport, BalanceOfOneSystemClosesAndTellsWhereMassWent) {
  Model model(3);
  model.through(0.5);
  model.problem.balance_system = decaying;
  model.problem.constants[1] = 0.4; // decay, 1/day
  model.load(decaying, 1) = 0.002f;
  model.boundary(decaying, 0) = 4;
  model.start_all_at(decaying, 1);
  for (const int technique : {euler, runge_kutta, bdf}) {
    model.balance = {};
    model.run(technique, 10, 200);
    EXPECT_NEAR(model.balance.moved.inflow, 4 * 0.5 * 10, 1e-9);
    EXPECT_NEAR(model.balance.moved.loads, 2.0 * 10, 1e-6); // single precision of the load
    EXPECT_LT(model.balance.moved.reacted, -1);
    EXPECT_GT(model.balance.moved.outflow, 1);
    EXPECT_NEAR(model.balance.relative_error(), 0, 1e-12);
  }
}

TEST(Transport, WhatCannotBeSolvedIsNamed) {
  Model model(3);
  model.flow(0, 3, 1);
  EXPECT_THROW(model.run(euler, 1, 1), InputError); // no such segment

  Model dry(2);
  dry.flow(1, outside, 3);
  const auto sentence = [](Model& it) {
    try {
      it.run(euler, 1, 2);
    } catch (const std::runtime_error& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  EXPECT_EQ(sentence(dry), "Segment 2 (s2) runs dry.");
  Model thin(2);
  thin.exchange(1, 0, -1);
  EXPECT_EQ(sentence(thin), "The exchange of segment 1 (s1) with segment 2 (s2) is below 0.");
  Model wild(1);
  wild.initial(conservative, 0) = std::numeric_limits<double>::infinity();
  EXPECT_EQ(sentence(wild), "The concentration of conservative tracer in segment 1 (s1) is no longer a finite number. "
                            "Take shorter steps or implicit BDF, and look at the flows, loads and rates there.");
}

} // namespace
} // namespace reference_engine
