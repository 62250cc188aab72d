// Confines a helper process to the one file that it reads, so that a damaged file that takes over a library can neither
// read another file, write, start a program nor reach the network. Linux only.
#ifndef SANDBOX_CONFINE_H
#define SANDBOX_CONFINE_H

#include <string>

namespace sandbox {

// The process is killed when the thread that started it ends. False when that has happened already: `channel`, a pipe
// or socket to the other side, is closed there. Call it first.
[[nodiscard]] bool die_with_parent(int channel);

// From here on the process and its threads may open the regular file behind `file` for reading, through
// name_of(file), and use descriptors that are already open; nothing else. Memory can no longer become code, so
// libraries must be loaded before. There is no way back.
//
// Three layers: no new privileges; Landlock with one rule, skipped where the kernel lacks it; a filter of system calls
// (seccomp), left out of sanitizer builds. A refused call fails with EACCES or EPERM. Returns the cause when a layer
// that the kernel has cannot be set up; the caller must then not touch the file. Empty: done.
[[nodiscard]] std::string confine_to(int file);

// The name under which the file of an open descriptor can be opened again, whatever happens to its path meanwhile.
std::string name_of(int file);

} // namespace sandbox

#endif
