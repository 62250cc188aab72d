// What the helper program for Access databases answers: the input, whatever it was asked.
#include "query/sources/databases/access_source.h"
#include "support/scratch.h"
#include "support/tables.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  static const fuzz::scratch_folder folder;
  constexpr std::size_t page = 2048;
  std::string database = std::to_string(size) + '\n';
  database.resize(page);
  database += fuzz::as_text(bytes, size);
  database.resize((database.size() + page - 1) / page * page); // a database consists of whole pages
  const std::string file = folder.write("river.mdb", database);
  fuzz::read_tables([&] { return open_access(file); }, file);
  return 0;
}
