// open_table FILE: reads the first table of a source; prints its first field, or why that failed. The tests put other
// helper programs next to copies of it.
#include "query/sources/open_table_source.h"

#include <cstdio>

int main(int, char** arguments) {
  try {
    std::puts(vesk::open_table_source(arguments[1])->fields(0).front().name.c_str());
  } catch (const vesk::table_source_exception& error) {
    std::puts(error.what());
  }
}
