// Reads an XML part of a zip archive, element by element.
#pragma once

#include "query/sources/workbooks/zip_archive.h"

#include <string>
#include <string_view>

namespace vesk {

// The attributes of an element.
class xml_attributes {
public:
  explicit xml_attributes(const char** pairs) : pairs_(pairs) {}

  // The value of an attribute, with any prefix; empty if there is none.
  std::string_view operator[](std::string_view name) const;

  // The same for a whole number; `otherwise` if it is not one.
  std::uint32_t number(std::string_view name, std::uint32_t otherwise) const;

private:
  const char** pairs_; // name, value, name, value, null
};

// Derive from it to handle each element. Names are passed without prefixes. An exception from a handler ends the
// reading and is passed on by `read`.
class xml_reader {
public:
  virtual ~xml_reader() = default;

  // Reads the whole part, which may unpack to at most `most` bytes. Declarations inside it are refused, since they can
  // define entities, as are tags that take the parser too much memory. Throws table_source_exception.
  void read(const zip_archive& archive, const std::string& part, std::size_t most = zip_archive::most_unpacked);

protected:
  virtual void start(std::string_view name, const xml_attributes& attributes) = 0;
  virtual void end(std::string_view) {}
  virtual void text(std::string_view) {}

private:
  struct calls;
};

} // namespace vesk
