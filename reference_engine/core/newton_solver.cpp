#include "core/newton_solver.h"

#include "core/kernels.h"

#include <sundials/sundials_nvector.h>

#include <algorithm>
#include <new>
#include <numeric>
#include <tuple>
#include <utility>

namespace reference_engine {

namespace {

bool is_before(const BlockLu::Pair& one, const BlockLu::Pair& two) {
  return std::tie(one.a, one.b) < std::tie(two.a, two.b);
}

std::vector<BlockLu::Pair> pairs_of(const JacobianShape& shape) {
  std::vector<BlockLu::Pair> pairs;
  for (const std::size_t segment : shape.joined) pairs.push_back({segment, segment + 1});
  for (const FarTerm& term : shape.far_terms)
    pairs.push_back({std::min(term.source, term.target), std::max(term.source, term.target)});
  std::ranges::sort(pairs, is_before);
  const auto same = [](const BlockLu::Pair& one, const BlockLu::Pair& two) { return one.a == two.a && one.b == two.b; };
  pairs.erase(std::unique(pairs.begin(), pairs.end(), same), pairs.end());
  return pairs;
}

} // namespace

NewtonSolver::NewtonSolver(JacobianShape shape, SUNContext context)
    : shape_(std::move(shape)), pairs_(pairs_of(shape_)) {
  for (const FarTerm& term : shape_.far_terms) {
    const BlockLu::Pair pair{std::min(term.source, term.target), std::max(term.source, term.target)};
    far_pair_.push_back(static_cast<std::size_t>(std::ranges::lower_bound(pairs_, pair, is_before) - pairs_.begin()));
  }
  const std::size_t places = shape_.class_of.size();
  if (shape_.couples) {
    groups_.push_back({std::vector<std::size_t>(places), BlockLu(shape_.segments, places, pairs_)});
    std::iota(groups_[0].places.begin(), groups_[0].places.end(), std::size_t{0});
  } else {
    const BlockLu lu(shape_.segments, 1, pairs_);
    for (std::size_t place = 0; place < places; ++place) groups_.push_back({{place}, lu});
  }
  values_.resize(shape_.segments * places);

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
  SUNMatFreeEmpty(matrix_);
  SUNLinSolFreeEmpty(handle_);
}

bool NewtonSolver::assemble(double gamma, bool last_serves, const std::function<void(Jacobian&)>& jacobian) {
  if (!last_serves) jacobian(jacobian_);
  gamma_ = gamma;
  return !last_serves;
}

int NewtonSolver::factorise() noexcept {
  for (Group& group : groups_) {
    fill(group);
    if (!group.lu.factorise()) return SUNLS_LUFACT_FAIL;
  }
  return 0;
}

// I - gamma J of these systems.
void NewtonSolver::fill(Group& group) {
  BlockLu& lu = group.lu;
  const std::size_t size = group.places.size(), places = shape_.class_of.size(), count = shape_.segments;
  lu.clear();
  for (std::size_t i = 0; i < count; ++i) {
    double* const block = lu.block(i);
    for (std::size_t k = 0; k < size; ++k) {
      for (std::size_t cause = 0; shape_.reacts && cause < size; ++cause)
        block[k * size + cause] =
            -gamma_ * jacobian_.reactions[(group.places[cause] * places + group.places[k]) * count + i];
      block[k * size + k] += 1 + gamma_ * jacobian_.classes[shape_.class_of[group.places[k]]].all[i];
    }
  }
  for (std::size_t k = 0; k < size; ++k) {
    const Jacobian::OfClass& its = jacobian_.classes[shape_.class_of[group.places[k]]];
    for (std::size_t p = 0; p < pairs_.size(); ++p) {
      if (pairs_[p].b != pairs_[p].a + 1) continue;
      lu.into_b(p, k) -= gamma_ * its.to_next[pairs_[p].a];
      lu.into_a(p, k) -= gamma_ * its.to_previous[pairs_[p].b];
    }
    for (std::size_t t = 0; t < far_pair_.size(); ++t) {
      const bool is_into_a = shape_.far_terms[t].target == pairs_[far_pair_[t]].a;
      (is_into_a ? lu.into_a(far_pair_[t], k) : lu.into_b(far_pair_[t], k)) -= gamma_ * its.far[t];
    }
  }
}

int NewtonSolver::solve(double* right_side) noexcept {
  const std::size_t count = shape_.segments;
  for (Group& group : groups_) {
    const std::size_t size = group.places.size();
    for (std::size_t i = 0; i < count; ++i)
      for (std::size_t k = 0; k < size; ++k)
        values_[group.lu.place(i) * size + k] = right_side[group.places[k] * count + i];
    group.lu.solve(values_.data());
    for (std::size_t i = 0; i < count; ++i)
      for (std::size_t k = 0; k < size; ++k)
        right_side[group.places[k] * count + i] = values_[group.lu.place(i) * size + k];
  }
  add_to_accounts(right_side);
  return 0;
}

// The accounts' rows: x = b + gamma J times the masses.
void NewtonSolver::add_to_accounts(double* values) const {
  const std::size_t places = shape_.class_of.size(), count = shape_.segments;
  double* const accounts = values + places * count;
  for (std::size_t place = 0; place < places; ++place) {
    const Jacobian::OfClass& its = jacobian_.classes[shape_.class_of[place]];
    const double* const masses = values + place * count;
    double outflow = 0, reacted = 0;
    for (std::size_t r = 0; r < shape_.boundary.size(); ++r) outflow += its.boundary[r] * masses[shape_.boundary[r]];
    if (!its.sink.empty()) reacted -= sum_of_products(count, its.sink.data(), masses);
    for (std::size_t cause = 0; shape_.reacts && cause < places; ++cause)
      reacted += sum_of_products(count, &jacobian_.reactions[(cause * places + place) * count], values + cause * count);
    accounts[2 * place] += gamma_ * outflow;
    accounts[2 * place + 1] += gamma_ * reacted;
  }
}

} // namespace reference_engine
