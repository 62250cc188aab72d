// The index is refused in the words of the parser, or each of its entries has a caption and a target in UTF-8.
#include "dataset/text_encoding.h"
#include "documents/xml_documentation_index.h"
#include "support/scratch.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  static const fuzz::scratch_folder folder;
  static xml_documentation_index index;
  static const bool ready = index.initialize();
  fuzz::demand(ready, "the XML library cannot be used");
  try {
    index.read(folder.write("documentation.xml", fuzz::as_text(bytes, size)),
               [](const std::string& name, const std::string& file) {
                 fuzz::demand(!name.empty() && !file.empty(), "an entry lacks something");
                 fuzz::demand(is_utf8(name) && is_utf8(file), "an entry is not valid UTF-8");
               });
  } catch (const xml_error& refusal) {
    fuzz::demand_sentence(std::string(refusal.what()) + ".", "");
  } catch (const xml_parse_error&) {
  }
  return 0;
}
