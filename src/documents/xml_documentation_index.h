// The index of documents, read with Xerces-C.
#pragma once

#include "app/documentation.h"

namespace vesk {

class xml_documentation_index final : public documentation_index {
public:
  bool initialize() override;
  void terminate() override;
  void read(const std::filesystem::path& file, const entry_taker& add) override;

private:
  bool ready_ = false;
};

} // namespace vesk
