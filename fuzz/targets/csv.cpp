#include "query/sources/text/csv_source.h"
#include "support/tables.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  const std::vector<std::uint8_t> place(bytes, bytes + size);
  fuzz::read_tables([&] { return open_csv(std::as_bytes(std::span(place)), fuzz::input_name); });
  return 0;
}
