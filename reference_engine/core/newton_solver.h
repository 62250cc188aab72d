// The linear systems of implicit steps, (I - gamma J) x = b, as CVODE asks for them, solved by KLU.
//
// The order of elimination is worked out once for a whole run, pivots stay while they serve, and the Jacobian J is
// worked out anew only when CVODE finds that an old one no longer does. Matrices of CVODE's own are not used: it would
// copy them at each factorisation, and in Debian 12 it does so without optimisation.
#ifndef REFERENCE_ENGINE_CORE_NEWTON_SOLVER_H
#define REFERENCE_ENGINE_CORE_NEWTON_SOLVER_H

#include <klu.h>
#include <sundials/sundials_linearsolver.h>
#include <sundials/sundials_matrix.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace reference_engine {

class NewtonSolver {
public:
  // A sparse matrix by columns; the rows of column j stand from starts[j] to before starts[j + 1], in no order, the
  // diagonal among them.
  struct Columns {
    std::int64_t* starts; // as many as unknowns, and one
    std::int64_t* rows;
    double* values;
  };

  NewtonSolver(std::size_t unknowns, std::size_t nonzeros, SUNContext context);
  ~NewtonSolver();
  NewtonSolver(const NewtonSolver&) = delete;
  NewtonSolver& operator=(const NewtonSolver&) = delete;

  // What CVODE is given. They stay this object's; the matrix is empty.
  SUNLinearSolver handle() const { return handle_; }
  SUNMatrix matrix() const { return matrix_; }

  // Makes I - gamma J, with the Jacobian of last time where that serves. Returns whether it was worked out anew.
  // jacobian: writes J, always with the same structure.
  bool assemble(double gamma, bool last_serves, const std::function<void(Columns&)>& jacobian);

  // Throws std::bad_alloc where memory ended the last call of CVODE.
  void check_memory() const;

private:
  // These are called by CVODE, which is C: nothing may be thrown. 0 good, above 0: a shorter step may help.
  int factorise() noexcept;
  int solve(double* right_side) noexcept;
  bool is_trustworthy();
  int verdict(); // on what KLU has just failed at

  std::vector<std::int64_t> starts_, rows_;
  std::vector<double> jacobian_, values_;
  std::vector<std::size_t> diagonal_; // positions in values_
  klu_l_common common_{};
  klu_l_symbolic* symbolic_ = nullptr;
  klu_l_numeric* numeric_ = nullptr;
  SUNLinearSolver handle_ = nullptr;
  SUNMatrix matrix_ = nullptr;
  bool memory_failed_ = false;
};

} // namespace reference_engine

#endif
