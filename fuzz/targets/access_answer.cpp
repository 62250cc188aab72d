// What the helper program for Access databases answers: the input, whatever it was asked.
#include "query/sources/access_source.h"
#include "support/scratch.h"
#include "support/tables.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  static const fuzz::scratch_folder folder;
  static const std::string database = folder.write("river.mdb", std::string(2048, '\0'));
  static const std::string helper = folder.write("helper", "#!/bin/sh\nexec cat \"${0%/*}/answer\"\n");
  std::filesystem::permissions(helper, std::filesystem::perms::owner_all);
  setenv("VESK_MDB", helper.c_str(), 1);
  folder.write("answer", fuzz::as_text(bytes, size));
  fuzz::read_tables([&] { return open_access(database); }, database);
  return 0;
}
