#include "core/newton_solver.h"

#include <sundials/sundials_nvector.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <type_traits>

namespace reference_engine {

static_assert(std::is_same_v<SuiteSparse_long, std::int64_t>);

NewtonSolver::NewtonSolver(std::size_t unknowns, std::size_t nonzeros, SUNContext context)
    : starts_(unknowns + 1), rows_(nonzeros), jacobian_(nonzeros), values_(nonzeros), diagonal_(unknowns) {
  klu_l_defaults(&common_);
  common_.ordering = 0; // by minimum degree: the structure is nearly symmetric
  common_.scale = -1;   // all unknowns are masses; 0 would look through the matrix each time
  handle_ = SUNLinSolNewEmpty(context);
  matrix_ = SUNMatNewEmpty(context);
  if (handle_ == nullptr || matrix_ == nullptr) {
    if (handle_ != nullptr) SUNLinSolFreeEmpty(handle_);
    if (matrix_ != nullptr) SUNMatFreeEmpty(matrix_);
    throw std::bad_alloc();
  }
  matrix_->ops->getid = [](SUNMatrix) { return SUNMATRIX_CUSTOM; };
  handle_->content = this;
  handle_->ops->gettype = [](SUNLinearSolver) { return SUNLINEARSOLVER_DIRECT; };
  handle_->ops->getid = [](SUNLinearSolver) { return SUNLINEARSOLVER_CUSTOM; };
  handle_->ops->setup = [](SUNLinearSolver solver, SUNMatrix) {
    return static_cast<NewtonSolver*>(solver->content)->factorise();
  };
  handle_->ops->solve = [](SUNLinearSolver solver, SUNMatrix, N_Vector into, N_Vector right_side, double) {
    N_VScale(1, right_side, into);
    return static_cast<NewtonSolver*>(solver->content)->solve(N_VGetArrayPointer(into));
  };
}

NewtonSolver::~NewtonSolver() {
  klu_l_free_numeric(&numeric_, &common_);
  klu_l_free_symbolic(&symbolic_, &common_);
  SUNMatFreeEmpty(matrix_);
  SUNLinSolFreeEmpty(handle_);
}

void NewtonSolver::check_memory() const {
  if (memory_failed_) throw std::bad_alloc();
}

bool NewtonSolver::assemble(double gamma, bool last_serves, const std::function<void(Columns&)>& jacobian) {
  if (!last_serves) {
    Columns columns{starts_.data(), rows_.data(), jacobian_.data()};
    jacobian(columns);
    for (std::size_t j = 0; symbolic_ == nullptr && j < diagonal_.size(); ++j) {
      const auto begin = rows_.begin() + starts_[j], end = rows_.begin() + starts_[j + 1];
      diagonal_[j] = static_cast<std::size_t>(std::find(begin, end, static_cast<std::int64_t>(j)) - rows_.begin());
    }
  }
  for (std::size_t k = 0; k < values_.size(); ++k) values_[k] = -gamma * jacobian_[k];
  for (const std::size_t k : diagonal_) values_[k] += 1;
  return !last_serves;
}

// Where the pivots of last time serve, working through them again takes a fraction of the time of choosing new ones.
int NewtonSolver::factorise() noexcept {
  memory_failed_ = false;
  const auto size = static_cast<std::int64_t>(diagonal_.size());
  if (symbolic_ == nullptr) symbolic_ = klu_l_analyze(size, starts_.data(), rows_.data(), &common_);
  if (symbolic_ == nullptr) return verdict();
  if (numeric_ != nullptr) {
    const bool done = klu_l_refactor(starts_.data(), rows_.data(), values_.data(), symbolic_, numeric_, &common_) != 0;
    if (done && is_trustworthy()) return 0;
    klu_l_free_numeric(&numeric_, &common_);
  }
  numeric_ = klu_l_factor(starts_.data(), rows_.data(), values_.data(), symbolic_, &common_);
  if (numeric_ == nullptr) return verdict();
  return common_.status == KLU_OK ? 0 : verdict();
}

// By the ratio of the smallest to the largest pivot, which costs next to nothing.
bool NewtonSolver::is_trustworthy() {
  const double least = std::pow(std::numeric_limits<double>::epsilon(), 2.0 / 3);
  return klu_l_rcond(symbolic_, numeric_, &common_) != 0 && common_.rcond > least;
}

int NewtonSolver::solve(double* right_side) noexcept {
  const auto size = static_cast<std::int64_t>(diagonal_.size());
  return klu_l_solve(symbolic_, numeric_, size, 1, right_side, &common_) != 0 ? 0 : verdict();
}

int NewtonSolver::verdict() {
  memory_failed_ = common_.status == KLU_OUT_OF_MEMORY || common_.status == KLU_TOO_LARGE;
  return common_.status == KLU_SINGULAR ? SUNLS_LUFACT_FAIL : SUNLS_PACKAGE_FAIL_UNREC;
}

} // namespace reference_engine
