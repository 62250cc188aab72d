#include "documents/xml_documentation_index.h"

#include "platform/file_io.h"

#include <cerrno>
#include <fstream>
#include <memory>
#include <sstream>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLException.hpp>

namespace vesk {

namespace fs = std::filesystem;
namespace xc = xercesc;

namespace {

std::string text_of(const XMLCh* text) {
  return text ? reinterpret_cast<const char*>(xc::TranscodeToStr(text, "UTF-8").str()) : "";
}

// A document that does not conform to its grammar is not used at all.
class throwing_handler final : public xc::ErrorHandler {
public:
  void warning(const xc::SAXParseException&) override {}
  void error(const xc::SAXParseException& exception) override { throw exception; }
  void fatalError(const xc::SAXParseException& exception) override { throw exception; }
  void resetErrors() override {}
};

std::string get_attribute(const xc::DOMNode& node, const std::string& name) {
  const xc::TranscodeFromStr wide(reinterpret_cast<const XMLByte*>(name.data()), name.size(), "UTF-8");
  const xc::DOMNamedNodeMap* attributes = node.getAttributes();
  const xc::DOMNode* attribute = attributes ? attributes->getNamedItem(wide.str()) : nullptr;
  const std::string node_name = text_of(node.getNodeName());
  if (!attribute) throw xml_error("node '" + node_name + "' missing attribute '" + name + "'");
  std::string value = text_of(attribute->getNodeValue());
  if (value.empty()) throw xml_error("attribute '" + name + "' of node '" + node_name + "' missing value");
  return value;
}

// The node after `node` in document order, within `root`.
const xc::DOMNode* next_node(const xc::DOMNode* node, const xc::DOMNode* root) {
  if (const xc::DOMNode* child = node->getFirstChild()) return child;
  while (node != root && !node->getNextSibling()) node = node->getParentNode();
  return node == root ? nullptr : node->getNextSibling();
}

// Read here and not by the library, which would convert the name to the locale's encoding.
std::string content_of(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream content;
  if (!stream) throw xml_parse_error(file_failure("open", file.string(), errno));
  if (stream.peek() != std::ifstream::traits_type::eof()) content << stream.rdbuf();
  return content.str();
}

// Parses the content of a file. The document is valid as long as this object.
class index_parser {
public:
  index_parser(const std::string& content, const char* name) {
    constexpr XMLSize_t most_entities = 1000;
    limits_.setEntityExpansionLimit(most_entities);
    parser_.setValidationScheme(xc::XercesDOMParser::Val_Always);
    parser_.setDoNamespaces(true);
    parser_.setDisableDefaultEntityResolution(true); // never reads outside the file
    parser_.setLoadExternalDTD(false);
    parser_.setCreateEntityReferenceNodes(false);
    parser_.setSecurityManager(&limits_);
    parser_.setErrorHandler(&handler_);
    parser_.parse(xc::MemBufInputSource(reinterpret_cast<const XMLByte*>(content.data()), content.size(), name));
  }
  const xc::DOMNode* root() {
    const xc::DOMDocument* document = parser_.getDocument();
    return document ? document->getDocumentElement() : nullptr;
  }

private:
  xc::SecurityManager limits_;
  throwing_handler handler_;
  xc::XercesDOMParser parser_;
};

std::unique_ptr<index_parser> parse_index(const fs::path& file) {
  const std::string content = content_of(file);
  try {
    return std::make_unique<index_parser>(content, "documentation.xml");
  } catch (const xc::XMLException& error) {
    throw xml_parse_error(text_of(error.getMessage()));
  } catch (const xc::SAXException& error) {
    throw xml_parse_error(text_of(error.getMessage()));
  } catch (const xc::DOMException& error) {
    throw xml_parse_error(text_of(error.getMessage()));
  }
}

} // namespace

bool xml_documentation_index::initialize() {
  try {
    xc::XMLPlatformUtils::Initialize();
    ready_ = true;
  } catch (...) {
    ready_ = false;
  }
  return ready_;
}

void xml_documentation_index::terminate() {
  if (ready_) xc::XMLPlatformUtils::Terminate();
  ready_ = false;
}

void xml_documentation_index::read(const fs::path& file, const entry_taker& add) {
  if (!ready_) throw xml_parse_error("Cannot start the XML library.");
  const auto parser = parse_index(file);
  const xc::DOMNode* root = parser->root();
  for (const xc::DOMNode* node = root; node; node = next_node(node, root)) {
    if (text_of(node->getNodeName()) != "document") continue;
    const std::string target = get_attribute(*node, "file");
    add(get_attribute(*node, "name"), target);
  }
}

} // namespace vesk
