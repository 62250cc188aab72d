// NetCDF files of the classic formats (CDF-1, CDF-2, CDF-5) that have lost their end.
#ifndef SANDBOX_CLASSIC_FILE_H
#define SANDBOX_CLASSIC_FILE_H

#include <string>

namespace sandbox {

// The cause to refuse a file that is shorter than its header says: the NetCDF library reads zeros beyond the end, which
// look like results. It continues a sentence that begins with the file's name, and has no full stop. Empty for a whole
// file and for files of other formats.
std::string missing_end_of(const char* name);

} // namespace sandbox

#endif
