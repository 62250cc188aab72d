// The linear systems of implicit steps, (I - gamma J) x = b, as CVODE asks for them.
//
// The unknowns are masses, [place of the system][segment], followed by two accounts for each system: what it lost
// through the boundary and by reactions. Nothing depends on the accounts, so the masses are solved first, in blocks,
// and the accounts follow. The Jacobian J is computed again only when CVODE finds the old one too inaccurate. CVODE's
// own matrices are not used: it would copy them at each factorisation, and in Debian 12 it does so without
// optimisation.
#ifndef REFERENCE_ENGINE_CORE_NEWTON_SOLVER_H
#define REFERENCE_ENGINE_CORE_NEWTON_SOLVER_H

#include "core/block_lu.h"
#include "core/jacobian.h"

#include <sundials/sundials_linearsolver.h>
#include <sundials/sundials_matrix.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace reference_engine {

class NewtonSolver {
public:
  NewtonSolver(JacobianShape shape, SUNContext context);
  ~NewtonSolver();
  NewtonSolver(const NewtonSolver&) = delete;
  NewtonSolver& operator=(const NewtonSolver&) = delete;

  // What CVODE is given. They stay this object's; the matrix is empty.
  SUNLinearSolver handle() const { return handle_; }
  SUNMatrix matrix() const { return matrix_; }

  // Takes gamma and the Jacobian, the last one where it is accurate enough. Returns whether it was computed again.
  bool assemble(double gamma, bool last_serves, const std::function<void(Jacobian&)>& jacobian);

private:
  // Systems that depend on one another, by their places; all others are solved for by themselves.
  struct Group {
    std::vector<std::size_t> places;
    BlockLu lu;
  };

  // These are called by CVODE, which is C: nothing may be thrown. 0 good, above 0: a shorter step may help.
  int factorise() noexcept;
  int solve(double* right_side) noexcept;
  void fill(Group& group);
  void add_to_accounts(double* values) const;

  JacobianShape shape_;
  std::vector<BlockLu::Pair> pairs_;  // of segments, ascending
  std::vector<std::size_t> far_pair_; // of each far term
  std::vector<Group> groups_;
  Jacobian jacobian_;
  double gamma_ = 0;
  std::vector<double> values_; // of a group, in its order of elimination
  SUNLinearSolver handle_ = nullptr;
  SUNMatrix matrix_ = nullptr;
};

} // namespace reference_engine

#endif
