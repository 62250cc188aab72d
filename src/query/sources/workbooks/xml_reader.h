// An XML part of a zip archive, element by element.
#pragma once

#include "query/sources/workbooks/zip_archive.h"

#include <string>
#include <string_view>

namespace vesk {

// The attributes of an element.
class xml_attributes {
public:
  explicit xml_attributes(const char** pairs) : pairs_(pairs) {}

  // The value of an attribute, whatever the prefix of its name; empty when there is none.
  std::string_view operator[](std::string_view name) const;

  // The same for a whole number; `otherwise` when it is none.
  std::uint32_t number(std::string_view name, std::uint32_t otherwise) const;

private:
  const char** pairs_; // name, value, name, value, null
};

// Derive from it what is to be done at each element. Names come without their prefixes. What a handler throws ends the
// reading and leaves `read`.
class xml_reader {
public:
  virtual ~xml_reader() = default;

  // Reads the whole part, which unpacks to `most` bytes at most. Declarations inside it are refused, for they can be
  // entities, and so are tags that take the parser too much memory. Throws table_source_exception.
  void read(const zip_archive& archive, const std::string& part, std::size_t most = zip_archive::most_unpacked);

protected:
  virtual void start(std::string_view name, const xml_attributes& attributes) = 0;
  virtual void end(std::string_view) {}
  virtual void text(std::string_view) {}

private:
  struct calls;
};

} // namespace vesk
