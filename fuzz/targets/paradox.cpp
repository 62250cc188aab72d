#include "query/sources/databases/paradox_source.h"
#include "support/tables.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  const fuzz::table_and_memo input(bytes, size);
  fuzz::read_tables([&] { return open_paradox(input.table_bytes(), input.memo_bytes(), fuzz::input_name); });
  return 0;
}
