// The index of the documents that are installed with the program.
#pragma once

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

namespace vesk {

// The index is incomplete; names the missing attribute and its element.
class xml_error : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The parser's message about a file that is missing, not well-formed or not valid.
class xml_parse_error : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Reads the index. Programs with a documentation menu supply one; others do not load the XML library. Main thread.
class documentation_index {
public:
  using entry_taker = std::function<void(const std::string& name, const std::string& file)>;

  virtual ~documentation_index() = default;
  // Initializes the XML library, once per process. False if that fails; then `read` fails, too.
  virtual bool initialize() = 0;
  virtual void terminate() = 0;
  // For each element `document`, at any depth and in document order, calls `add` with its caption (attribute `name`)
  // and its file or link (attribute `file`), both UTF-8 and never empty. The file is validated against its internal
  // grammar; nothing outside it is read. Throws xml_parse_error before any call of `add`, and xml_error at an element
  // that lacks an attribute.
  virtual void read(const std::filesystem::path& file, const entry_taker& add) = 0;
};

// The folder of "documentation.xml" and its documents, ending in a separator: next to the executable, otherwise
// <prefix>/share/doc/vesk/.
std::filesystem::path documentation_directory();

} // namespace vesk
