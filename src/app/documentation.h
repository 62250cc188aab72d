// The index of the documents that come with the program.
#pragma once

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

namespace vesk {

// An incomplete index; names the missing attribute and its element.
class xml_error : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The parser's own message about a file that is missing, broken or not valid.
class xml_parse_error : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The XML library, once for the process. False when it cannot be initialized; all below then fails. Main thread.
bool initialize_xml();
void terminate_xml();

// Reads the index: for each element `document`, at any depth and in document order, `add` is called with its caption
// (attribute `name`) and its file or link (attribute `file`), both UTF-8 and never empty. The file is validated against
// its internal grammar; nothing outside it is read. Throws xml_parse_error before any call of `add`, xml_error at the
// element that lacks an attribute.
void read_documentation_index(const std::filesystem::path& file,
                              const std::function<void(const std::string& name, const std::string& file)>& add);

// The folder of "documentation.xml" and its documents, ending in a separator: beside the executable, else
// <prefix>/share/doc/vesk/.
std::filesystem::path documentation_directory();

} // namespace vesk
