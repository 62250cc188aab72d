#include "query/sources/xml_reader.h"

#include "query/sources/table_source.h"

#include <charconv>
#include <exception>
#include <expat.h>
#include <memory>

namespace vesk {

namespace {

std::string_view without_prefix(std::string_view name) {
  const std::size_t colon = name.rfind(':');
  return colon == name.npos ? name : name.substr(colon + 1);
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

// What the parser, which is C, calls: nothing may be thrown through it.
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

void xml_reader::read(const zip_archive& archive, const std::string& part) {
  const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr), XML_ParserFree);
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
                                 "part " + part + " of it is no XML that can be read: " +
                                     (state.has_document_type ? "it declares entities or other things of its own"
                                                              : XML_ErrorString(XML_GetErrorCode(parser.get()))) +
                                     ", in line " + line + ".");
  };
  archive.read(part, [&](std::string_view piece) {
    parse(piece, false);
    return true;
  });
  parse({}, true);
}

} // namespace vesk
