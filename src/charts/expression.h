// The arithmetic of Fill/Calc: one expression, compiled once and evaluated for each selected cell.
//
// Operators + - * / ^, comparisons, && || and ?:, the usual functions (sqrt, exp, ln, log10, sin, min, max, abs, ...),
// _pi and _e. Not thread-safe.
#pragma once

#include <memory>
#include <stdexcept>
#include <string_view>

namespace vesk {

// Why an expression cannot be used, in one sentence.
class expression_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

class expression {
public:
  // The values of the names in an expression, for one cell.
  struct variables {
    double x = 0;   // the cell's current value
    double row = 0; // the number in the row header
    double i = 0;   // position in the selection, from 1, down each column in turn
    double n = 0;   // rows in the selection
  };

  explicit expression(std::string_view text); // throws expression_exception
  ~expression();
  expression(const expression&) = delete;
  expression& operator=(const expression&) = delete;

  // The result may be infinite or not a number; the caller refuses those. Throws expression_exception.
  double evaluate(const variables& values);

private:
  struct parser;
  std::unique_ptr<parser> parser_;
};

} // namespace vesk
