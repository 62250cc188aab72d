// The database goes through the helper program, which may fail as it likes.
#include "query/sources/databases/access_source.h"
#include "support/scratch.h"
#include "support/tables.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  static const fuzz::scratch_folder folder;
  const std::string file = folder.write("river.mdb", fuzz::as_text(bytes, size));
  fuzz::read_tables([&] { return open_access(file); }, file);
  return 0;
}
