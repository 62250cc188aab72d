#include "core/vector_operations.h"

#include <nvector/nvector_serial.h>

#include <array>
#include <cmath>
#include <cstddef>

namespace reference_engine {

namespace {

const double* values(N_Vector vector) {
  return NV_DATA_S(vector);
}
std::size_t size(N_Vector vector) {
  return static_cast<std::size_t>(NV_LENGTH_S(vector));
}

// into[k] = value(k). The operands may be the result itself, but never overlap otherwise.
template <class Value>
void fill(N_Vector into, Value value) {
  double* const result = NV_DATA_S(into);
  const std::size_t count = size(into);
#pragma GCC ivdep
  for (std::size_t k = 0; k < count; ++k) result[k] = value(k);
}

void linear_sum(double a, N_Vector x, double b, N_Vector y, N_Vector into) {
  const double *const left = values(x), *const right = values(y);
  if (a == 1 && b == 1) return fill(into, [=](std::size_t k) { return left[k] + right[k]; });
  if (b == 1) return fill(into, [=](std::size_t k) { return a * left[k] + right[k]; });
  fill(into, [=](std::size_t k) { return a * left[k] + b * right[k]; });
}
void constant(double value, N_Vector into) {
  fill(into, [=](std::size_t) { return value; });
}
void product(N_Vector x, N_Vector y, N_Vector into) {
  const double *const left = values(x), *const right = values(y);
  fill(into, [=](std::size_t k) { return left[k] * right[k]; });
}
void quotient(N_Vector x, N_Vector y, N_Vector into) {
  const double *const left = values(x), *const right = values(y);
  fill(into, [=](std::size_t k) { return left[k] / right[k]; });
}
void scale(double factor, N_Vector x, N_Vector into) {
  const double* const from = values(x);
  fill(into, [=](std::size_t k) { return factor * from[k]; });
}
void magnitude(N_Vector x, N_Vector into) {
  const double* const from = values(x);
  fill(into, [=](std::size_t k) { return std::abs(from[k]); });
}
void inverse(N_Vector x, N_Vector into) {
  const double* const from = values(x);
  fill(into, [=](std::size_t k) { return 1 / from[k]; });
}
void add_constant(N_Vector x, double value, N_Vector into) {
  const double* const from = values(x);
  fill(into, [=](std::size_t k) { return from[k] + value; });
}

// Several sums side by side, which the compiler may not make of one: it keeps the order of additions.
double root_of_weighted_mean_square(N_Vector x, N_Vector weights) {
  constexpr std::size_t width = 8;
  const double *const value = values(x), *const weight = values(weights);
  const std::size_t count = size(x);
  std::array<double, width> sums{};
  std::size_t k = 0;
  for (; k + width <= count; k += width)
    for (std::size_t j = 0; j < width; ++j) {
      const double weighted = value[k + j] * weight[k + j];
      sums[j] += weighted * weighted;
    }
  double sum = 0;
  for (; k < count; ++k) sum += value[k] * weight[k] * value[k] * weight[k];
  for (const double part : sums) sum += part;
  return std::sqrt(sum / static_cast<double>(count));
}

} // namespace

void use_own_operations(N_Vector vector) {
  auto& operations = *vector->ops;
  operations.nvlinearsum = linear_sum;
  operations.nvconst = constant;
  operations.nvprod = product;
  operations.nvdiv = quotient;
  operations.nvscale = scale;
  operations.nvabs = magnitude;
  operations.nvinv = inverse;
  operations.nvaddconst = add_constant;
  operations.nvwrmsnorm = root_of_weighted_mean_square;
}

} // namespace reference_engine
