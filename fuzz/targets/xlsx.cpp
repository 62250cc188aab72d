#include "query/sources/workbooks/xlsx_source.h"
#include "support/tables.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  const std::vector<char> archive = fuzz::zipped_workbook(bytes, size);
  fuzz::read_tables([&] { return open_xlsx(std::as_bytes(std::span(archive)), fuzz::input_name); });
  return 0;
}
