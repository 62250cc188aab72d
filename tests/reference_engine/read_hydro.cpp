// read_hydro WHAT FILE: reads a hydrodynamic file like the engine and prints why that failed, one line each time. WHAT
// is "content"; "rows", which also reads two rows; or "wait", which stops waiting for the content. The tests put their
// own helper programs next to copies of it.
#include "core/errors.h"
#include "host/hydro_reader.h"

#include <cstdio>
#include <cstring>

namespace {

using reference_engine::HydroReader;

struct GaveUp {};

void read_row(HydroReader& reader) {
  try {
    HydroReader::Row row(1);
    reader.read_row(HydroReader::Quantity::flow, 0, row);
  } catch (const reference_engine::InputError& error) {
    std::puts(error.what());
  }
}

} // namespace

int main(int, char** arguments) {
  const bool waits = std::strcmp(arguments[1], "wait") == 0;
  try {
    HydroReader reader(
        arguments[2],
        [=] {
          if (waits) throw GaveUp();
        },
        std::chrono::milliseconds(waits ? 100'000 : 300));
    reader.content();
    if (std::strcmp(arguments[1], "rows") != 0) return 0;
    for (int k = 0; k < 2; ++k) read_row(reader);
  } catch (const reference_engine::InputError& error) {
    std::puts(error.what());
  } catch (const GaveUp&) {
    std::puts("gave up");
  }
}
