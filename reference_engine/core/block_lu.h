// Sparse linear systems whose unknowns come in groups of equal size, one group for each segment, by Gaussian
// elimination in blocks (Davis, Direct Methods for Sparse Linear Systems, 2006, chapters 4 and 6).
//
// Segments are eliminated in an order that keeps the fill small (approximate minimum degree: Amestoy, Davis and Duff,
// ACM Transactions on Mathematical Software 30, 2004), worked out once. Along a river nothing fills, so that time and
// memory are proportional to the number of segments. Pivots are chosen inside a block only. That suffices for
// the matrices of implicit steps: the losses of a segment are on the diagonal, and the diagonal dominates its column.
#ifndef REFERENCE_ENGINE_CORE_BLOCK_LU_H
#define REFERENCE_ENGINE_CORE_BLOCK_LU_H

#include <cstddef>
#include <span>
#include <vector>

namespace reference_engine {

class BlockLu {
public:
  // Two segments that depend on one another: on each unknown of the other its own counterpart alone.
  struct Pair {
    std::size_t a, b;
  };

  // pairs: each at most once, a and b different. size: unknowns of a group. Throws std::bad_alloc; nothing is allocated
  // later.
  BlockLu(std::size_t segments, std::size_t size, std::span<const Pair> pairs);

  // The matrix. Call clear() and fill it again before each factorisation.
  void clear();
  double* block(std::size_t segment) { return &diagonal_[place_[segment] * size_ * size_]; } // [row][column]
  // The coefficient of unknown k of segment b, or a, in the equation of the other one's.
  double& into_a(std::size_t pair, std::size_t k) { return at(pair, k, pair_is_turned_[pair]); }
  double& into_b(std::size_t pair, std::size_t k) { return at(pair, k, !pair_is_turned_[pair]); }

  // Replaces the matrix by its factors; false where a block is singular.
  bool factorise();
  // values: the right-hand side and then the solution, [place of the segment][unknown].
  void solve(double* values);
  // The segment's position in the order of elimination.
  std::size_t place(std::size_t segment) const { return place_[segment]; }

private:
  void find_order(std::span<const Pair> pairs);
  void find_fill(std::span<const Pair> pairs);
  void find_rows();
  double& at(std::size_t pair, std::size_t k, bool lower) {
    const std::size_t entry = pair_entry_[pair], step = is_full_[entry] ? size_ + 1 : 1;
    return (lower ? lower_ : upper_)[value_[entry] + k * step];
  }
  template <std::size_t M>
  bool factorise_blocks();
  template <std::size_t M>
  void solve_blocks(double* values);

  std::size_t segments_, size_;
  std::vector<std::size_t> place_; // by segment
  // The factors by columns of L, whose rows are those of U transposed. An entry that nothing fills is a diagonal block,
  // of which only the diagonal is stored.
  std::vector<std::size_t> starts_, rows_;         // of each column, and the end; by entry, ascending in a column
  std::vector<std::size_t> value_;                 // where an entry's values begin
  std::vector<bool> is_full_;                      // by entry
  std::vector<std::size_t> row_starts_, row_list_; // entries by row
  std::vector<std::size_t> column_;                // by entry
  std::vector<std::size_t> pair_entry_;
  std::vector<bool> pair_is_turned_;             // a is eliminated after b
  std::vector<double> diagonal_, lower_, upper_; // blocks; after factorisation the first are inverse
  std::vector<std::size_t> where_;               // room: the entry of a row in the column at work
  std::vector<double> left_, right_;             // room: a block each
};

} // namespace reference_engine

#endif
