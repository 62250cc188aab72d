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

// Initializes the XML library, once per process. False if that fails; then everything below fails. Main thread.
bool initialize_xml();
void terminate_xml();

// Reads the index: for each element `document`, at any depth and in document order, calls `add` with its caption
// (attribute `name`) and its file or link (attribute `file`), both UTF-8 and never empty. The file is validated against
// its internal grammar; nothing outside it is read. Throws xml_parse_error before any call of `add`, and xml_error at
// an element that lacks an attribute.
void read_documentation_index(const std::filesystem::path& file,
                              const std::function<void(const std::string& name, const std::string& file)>& add);

// The folder of "documentation.xml" and its documents, ending in a separator: next to the executable, otherwise
// <prefix>/share/doc/vesk/.
std::filesystem::path documentation_directory();

} // namespace vesk
