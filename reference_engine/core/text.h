// Sentences from parts.
#ifndef REFERENCE_ENGINE_CORE_TEXT_H
#define REFERENCE_ENGINE_CORE_TEXT_H

#include <sstream>
#include <string>

namespace reference_engine {

template <class... Part>
std::string text(const Part&... parts) {
  std::ostringstream out;
  (out << ... << parts);
  return std::move(out).str();
}

// A number for a reader: with so many significant digits at most.
inline std::string rounded(double value, int digits) {
  std::ostringstream out;
  out.precision(digits);
  out << value;
  return std::move(out).str();
}

// "3 (Roanoke above the weir)": a segment or system for a reader, counted from 1.
template <class Item>
std::string numbered(const Item& item, std::size_t position) {
  return text(position + 1, " (", item.name, ")");
}

} // namespace reference_engine

#endif
