// The arithmetic of Fill/Calc: one expression, compiled once and evaluated for each selected cell.
//
// Operators + - * / ^, comparisons, && || and ?:, the usual functions (sqrt, exp, ln, log10, sin, min, max, abs, ...),
// _pi and _e. Not for use by two threads at a time.
#pragma once

#include <memory>
#include <stdexcept>
#include <string_view>

namespace vesk {

// Why an expression can't be used, in one sentence.
class expression_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

class expression {
public:
  // What the names in an expression stand for, cell by cell.
  struct variables {
    double x = 0;   // the cell's present value
    double row = 0; // the number in the row header
    double i = 0;   // place in the selection, from 1, top to bottom in each column
    double n = 0;   // rows in the selection
  };

  explicit expression(std::string_view text); // throws expression_exception
  ~expression();
  expression(const expression&) = delete;
  expression& operator=(const expression&) = delete;

  // May be infinite or not a number, which the caller refuses. Throws expression_exception.
  double evaluate(const variables& values);

private:
  struct parser;
  std::unique_ptr<parser> parser_;
};

} // namespace vesk
