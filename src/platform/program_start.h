// The first call of each program.
#pragma once

namespace vesk {

// From here on, writes to a pipe without a reader (SIGPIPE) or beyond the file size limit (SIGXFSZ) fail and are
// reported, instead of silently ending the process. A closed standard stream is replaced by one that always fails:
// otherwise the next file opened would get its number, and messages would be written into it. NetCDF libraries of
// engines do not read .ncrc, .daprc and .dodsrc, which could come with a folder of models.
void prepare_process();

// Undoes everything that a new program would inherit. Safe between fork and exec.
void restore_signals();

} // namespace vesk
