#include "query/sources/workbooks/xml_reader.h"

#include "query/sources/table_source.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <exception>
#include <expat.h>
#include <malloc.h>
#include <memory>

namespace vesk {

namespace {

std::string_view without_prefix(std::string_view name) {
  const std::size_t colon = name.rfind(':');
  return colon == name.npos ? name : name.substr(colon + 1);
}

// The parser stores the current tag, the open tags, and each name that it has seen; a file can make all of these large.
// This is its memory limit, several times what a real workbook needs.
constexpr std::size_t most_parser_memory = std::size_t{4} << 20;

// The memory used by the thread's current parser: expat passes no argument to its allocators.
thread_local std::size_t parser_memory = 0;

void release_memory(void* memory) {
  parser_memory -= malloc_usable_size(memory);
  std::free(memory);
}

void* more_memory(void* memory, std::size_t size) {
  const std::size_t others = parser_memory - malloc_usable_size(memory);
  if (size > most_parser_memory - std::min(others, most_parser_memory)) return nullptr;
  void* const larger = std::realloc(memory, size);
  if (larger) parser_memory = others + malloc_usable_size(larger);
  return larger;
}

void* take_memory(std::size_t size) {
  return more_memory(nullptr, size);
}

constexpr XML_Memory_Handling_Suite limited_memory{take_memory, more_memory, release_memory};

const char* cause_of(XML_Error error) {
  return error == XML_ERROR_NO_MEMORY ? "its tags are too long, nested too deeply or have too many names"
                                      : XML_ErrorString(error);
}

} // namespace

std::string_view xml_attributes::operator[](std::string_view name) const {
  for (const char** pair = pairs_; *pair; pair += 2)
    if (without_prefix(*pair) == name) return pair[1];
  return {};
}

std::uint32_t xml_attributes::number(std::string_view name, std::uint32_t otherwise) const {
  const std::string_view text = (*this)[name];
  std::uint32_t result = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
  return error == std::errc() && end == text.data() + text.size() ? result : otherwise;
}

// Called by the parser, which is C: no exception may pass through it.
struct xml_reader::calls {
  xml_reader& reader;
  XML_Parser parser;
  std::exception_ptr thrown;
  bool has_document_type = false;

  static calls& of(void* data) { return *static_cast<calls*>(data); }

  template <class Work>
  static void guarded(void* data, const Work& work) {
    calls& c = of(data);
    if (c.thrown) return;
    try {
      work(c.reader);
    } catch (...) {
      c.thrown = std::current_exception();
      XML_StopParser(c.parser, XML_FALSE);
    }
  }
  static void start(void* data, const char* name, const char** attributes) {
    guarded(data, [&](xml_reader& r) { r.start(without_prefix(name), xml_attributes(attributes)); });
  }
  static void end(void* data, const char* name) {
    guarded(data, [&](xml_reader& r) { r.end(without_prefix(name)); });
  }
  static void text(void* data, const char* text, int size) {
    guarded(data, [&](xml_reader& r) { r.text({text, static_cast<std::size_t>(size)}); });
  }
  static void document_type(void* data, const char*, const char*, const char*, int has_declarations) {
    if (!has_declarations) return;
    of(data).has_document_type = true;
    XML_StopParser(of(data).parser, XML_FALSE);
  }
};

void xml_reader::read(const zip_archive& archive, const std::string& part, std::size_t most) {
  parser_memory = 0;
  const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(
      XML_ParserCreate_MM(nullptr, &limited_memory, nullptr), XML_ParserFree);
  if (!parser) throw std::bad_alloc();
  calls state{*this, parser.get(), {}};
  XML_SetUserData(parser.get(), &state);
  XML_SetElementHandler(parser.get(), calls::start, calls::end);
  XML_SetCharacterDataHandler(parser.get(), calls::text);
  XML_SetStartDoctypeDeclHandler(parser.get(), calls::document_type);

  const auto parse = [&](std::string_view piece, bool is_last) {
    if (XML_Parse(parser.get(), piece.data(), static_cast<int>(piece.size()), is_last) == XML_STATUS_OK) return;
    if (state.thrown) std::rethrow_exception(state.thrown);
    const std::string line = std::to_string(XML_GetCurrentLineNumber(parser.get()));
    throw table_source_exception(archive.name(), "", "",
                                 "part " + part + " is not valid XML: " +
                                     (state.has_document_type ? "document type declarations are not supported"
                                                              : cause_of(XML_GetErrorCode(parser.get()))) +
                                     ", in line " + line + ".");
  };
  archive.read(
      part, [&](std::string_view piece) { parse(piece, false); }, most);
  parse({}, true);
}

} // namespace vesk
