// What each program does before all else.
#pragma once

namespace vesk {

// Writes that cannot be done fail from here on, and are reported, where they would end the process without a word: to
// a pipe that nobody reads (SIGPIPE) and beyond the limit of file sizes (SIGXFSZ). A standard stream that is closed is
// held by one that fails: the next file to be opened would take its number, and messages would be written into it.
// NetCDF libraries of engines do not read .ncrc, .daprc and .dodsrc, which a folder of models can bring along.
void prepare_process();

// Undoes what a new program would inherit. For a process between fork and exec.
void restore_signals();

} // namespace vesk
