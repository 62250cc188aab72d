#include "core/bdf.h"

#include "core/errors.h"
#include "core/mass_rates.h"
#include "core/newton_solver.h"
#include "core/text.h"
#include "core/vector_operations.h"

#include <cvode/cvode.h>
#include <nvector/nvector_serial.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <limits>

namespace reference_engine {

namespace {

static_assert(sizeof(sunindextype) == sizeof(std::int64_t) && sizeof(realtype) == sizeof(double));

template <class Handle, auto release>
struct Release {
  using pointer = Handle;
  void operator()(Handle handle) const { release(handle); }
};
template <class Handle, auto release>
using Owned = std::unique_ptr<Handle, Release<Handle, release>>;

void free_context(SUNContext context) {
  SUNContext_Free(&context);
}
void free_memory(void* memory) {
  CVodeFree(&memory);
}

// CVODE and its linear solver have a code each for a lack of memory.
void check(int flag, const char* call) {
  if (flag == CV_MEM_FAIL || flag == CVLS_MEM_FAIL) throw std::bad_alloc();
  if (flag < 0) throw RunError(text("The implicit solver could not be set up (", call, ": ", flag, ")."));
}
template <class Handle>
Handle made(Handle handle) {
  if (handle == nullptr) throw std::bad_alloc();
  return handle;
}

SUNContext make_context() {
  SUNContext context = nullptr;
  check(SUNContext_Create(nullptr, &context), "SUNContext_Create");
  return context;
}

} // namespace

// CVODE with everything that it works on. Its time is the sum of the steps.
class Bdf::Solver {
public:
  Solver(Equations& equations, const State& state)
      : rates_(equations), size_(static_cast<sunindextype>(rates_.size())), context_(make_context()),
        masses_(made(N_VNew_Serial(size_, context_.get()))), newton_(rates_.shape(), context_.get()),
        memory_(made(CVodeCreate(CV_BDF, context_.get()))) {
    constexpr long most_steps = 20000; // in one step of the run
    use_own_operations(masses_.get());
    make_sure_of_room();
    std::fill_n(N_VGetArrayPointer(masses_.get()), size_, 0.0);
    rates_.start(state, N_VGetArrayPointer(masses_.get()));
    check(CVodeInit(memory_.get(), &Solver::rates, time_, masses_.get()), "CVodeInit");
    check(CVodeSetErrHandlerFn(memory_.get(), &Solver::be_silent, nullptr), "CVodeSetErrHandlerFn");
    check(CVodeSetUserData(memory_.get(), this), "CVodeSetUserData");
    check(CVodeWFtolerances(memory_.get(), &Solver::weights), "CVodeWFtolerances");
    check(CVodeSetMaxNumSteps(memory_.get(), most_steps), "CVodeSetMaxNumSteps");
    check(CVodeSetLinearSolver(memory_.get(), newton_.handle(), newton_.matrix()), "CVodeSetLinearSolver");
    check(CVodeSetLinSysFn(memory_.get(), &Solver::newton_matrix), "CVodeSetLinSysFn");
  }

  // Moves the state by so many days, to these volumes.
  void advance(State& state, double days, std::vector<double>& volume, Balances& balances) {
    double* const masses = N_VGetArrayPointer(masses_.get());
    const std::vector<double> before(masses, masses + size_);
    const bool has_jumped = rates_.begin(state, days, balances);
    began_ = time_;
    // What CVODE knows of the past would mislead it: it would fail repeatedly before it restarts by itself.
    if (has_jumped) check(CVodeReInit(memory_.get(), time_, masses_.get()), "CVodeReInit");
    const double end = time_ + days;
    check(CVodeSetStopTime(memory_.get(), end), "CVodeSetStopTime"); // what follows has another forcing
    if (const int flag = CVode(memory_.get(), end, masses_.get(), &time_, CV_NORMAL); flag < 0) fail(flag, days);
    state.swap_volumes(volume);
    state.day += days;
    rates_.finish(masses, state);
    rates_.add_losses(before.data(), masses, balances);
  }

  // Goes on from the state's concentrations, which are not those that `advance` left.
  void restart(const State& state) {
    rates_.start(state, N_VGetArrayPointer(masses_.get()));
    check(CVodeReInit(memory_.get(), time_, masses_.get()), "CVodeReInit");
  }

private:
  // CVODE takes some twenty copies of the vector without looking whether there was memory for each, and would crash.
  void make_sure_of_room() const {
    constexpr std::size_t copies = 24;
    std::vector<Owned<N_Vector, N_VDestroy>> probe;
    while (probe.size() < copies) probe.emplace_back(made(N_VClone_Serial(masses_.get())));
  }

  [[noreturn]] void fail(int flag, double days) const {
    if (failure_) std::rethrow_exception(failure_);
    if (flag == CV_MEM_FAIL) throw std::bad_alloc();
    char* const name = CVodeGetReturnFlagName(flag);
    const std::string cause = name == nullptr ? text(flag) : std::string(name);
    std::free(name);
    throw RunError(text("Implicit BDF found no solution over a step of ", days, " days (", cause, ")."));
  }

  // CVODE is C, and what is thrown must not pass through it: it is kept until CVODE has given up.
  template <class Work>
  int guarded(Work work) noexcept {
    try {
      work();
      return 0;
    } catch (...) {
      failure_ = std::current_exception();
      return -1;
    }
  }

  static int rates(realtype time, N_Vector masses, N_Vector into, void* data) {
    auto& self = *static_cast<Solver*>(data);
    return self.guarded(
        [&] { self.rates_.rates(time - self.began_, N_VGetArrayPointer(masses), N_VGetArrayPointer(into)); });
  }
  static int newton_matrix(realtype time, N_Vector masses, N_Vector, SUNMatrix, booleantype last_serves,
                           booleantype* is_new, realtype gamma, void* data, N_Vector, N_Vector, N_Vector) {
    auto& self = *static_cast<Solver*>(data);
    return self.guarded([&] {
      *is_new = self.newton_.assemble(gamma, last_serves != 0, [&](Jacobian& into) {
        self.rates_.jacobian(time - self.began_, N_VGetArrayPointer(masses), into);
      });
    });
  }
  static int weights(N_Vector masses, N_Vector into, void* data) {
    static_cast<Solver*>(data)->rates_.weigh(N_VGetArrayPointer(masses), relative_tolerance, absolute_tolerance,
                                             N_VGetArrayPointer(into));
    return 0;
  }
  static void be_silent(int, const char*, const char*, char*, void*) {}

  MassRates rates_;
  sunindextype size_;
  Owned<SUNContext, free_context> context_;
  Owned<N_Vector, N_VDestroy> masses_;
  NewtonSolver newton_;
  Owned<void*, free_memory> memory_;
  realtype time_ = 0, began_ = 0; // days
  std::exception_ptr failure_;    // thrown in a call from CVODE
};

Bdf::Bdf() = default;
Bdf::~Bdf() = default;

StepLimit Bdf::limit(Equations& equations, const State& state, double days, double) {
  equations.move_to(state.day + days / 2);
  equations.set_volumes(state.volume);
  constexpr double unlimited = std::numeric_limits<double>::infinity();
  StepLimit limit{unlimited, 0, unlimited, 0};
  equations.network().take_layers(0, state.volume.size(), layers_);
  equations.network().move_water(layers_, water_);
  for (std::size_t i = 0; i < state.volume.size(); ++i) {
    const double change = water_.change[i];
    if (change < 0 && state.volume[i] / -change < limit.days) limit = {state.volume[i] / -change, i, unlimited, 0};
  }
  return limit;
}

void Bdf::step(Equations& equations, State& state, double days, Balances& balances) {
  // Below 0 by more than a few tolerances is the problem's doing, a demand that takes what is not there; the method
  // then restarts from 0. Less is its own error: it is not shown, but solved on, or the method would never get
  // going.
  constexpr double own_error = 100 * absolute_tolerance;
  const Problem& problem = equations.problem();
  equations.move_to(state.day + days / 2);
  new_volume_.resize(state.volume.size());
  equations.network().take_layers(0, state.volume.size(), layers_);
  if (!find_new_volumes(equations, state, days, layers_, new_volume_.data())) new_volume_ = state.volume;
  if (equations.classes().empty()) { // nothing is simulated
    balances.water.add(equations.network().water_in(), equations.network().water_released(), days);
    state.swap_volumes(new_volume_);
    state.day += days;
    return;
  }
  if (!solver_) {
    solver_ = std::make_unique<Solver>(equations, state);
    raised_.assign(problem.systems.size(), 0.0);
  }
  solver_->advance(state, days, new_volume_, balances);
  const bool starts_anew = !problem.negative_allowed && std::ranges::min(state.concentration) < -own_error;
  Balances raised(state);
  for (const TransportClass& it : equations.classes())
    for (const std::size_t system : it.systems()) hold_limits(problem, system, 0, state.volume.size(), state, raised);
  for (std::size_t s = 0; s < raised_.size(); ++s) {
    balances.systems[s].clipped += raised.systems[s].clipped - raised_[s];
    raised_[s] = starts_anew ? 0 : raised.systems[s].clipped;
  }
  if (starts_anew) solver_->restart(state);
}

} // namespace reference_engine
