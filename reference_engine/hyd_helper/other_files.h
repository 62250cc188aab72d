// HDF5, the format underlying NetCDF-4, lets a file refer to other files, which the library then reads as part of it.
#ifndef REFERENCE_ENGINE_HYD_HELPER_OTHER_FILES_H
#define REFERENCE_ENGINE_HYD_HELPER_OTHER_FILES_H

namespace reference_engine::hyd {

// Throws Refusal if the file contains external storage, a virtual data set or a link to another file, and opens none of
// those. Files of other formats pass.
void refuse_other_files(const char* name);

} // namespace reference_engine::hyd

#endif
