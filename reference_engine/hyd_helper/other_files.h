// HDF5, the format below NetCDF-4, lets a file name other files that the library then reads as if they belonged to it.
#ifndef REFERENCE_ENGINE_HYD_HELPER_OTHER_FILES_H
#define REFERENCE_ENGINE_HYD_HELPER_OTHER_FILES_H

namespace reference_engine::hyd {

// Throws Refusal for a file with external storage, a virtual data set or a link to another file, anywhere in it. Opens
// none of them. Files of other formats pass.
void refuse_other_files(const char* name);

} // namespace reference_engine::hyd

#endif
