// HDF5, the format below NetCDF-4, lets a file name other files that the library then reads as if they belonged to it.
#ifndef SANDBOX_OTHER_FILES_H
#define SANDBOX_OTHER_FILES_H

#include <string>

namespace sandbox {

// The cause to refuse a file with external storage, a virtual data set or a link to another file, anywhere in it; it
// continues a sentence that begins with the file's name, and has no full stop. Empty where there is none, and for files
// of other formats. Opens none of the other files.
std::string other_files_in(const char* name);

} // namespace sandbox

#endif
