// Confines a helper process to the one file that it reads. Even if a damaged file takes over a library, it cannot read
// another file, write, start a program or reach the network. Linux only.
#ifndef SANDBOX_CONFINE_H
#define SANDBOX_CONFINE_H

#include <string>

namespace sandbox {

// The process is killed when the thread that started it ends. False if that has already happened: then `channel`, a
// pipe or socket to the other side, is closed there. Call it first.
[[nodiscard]] bool die_with_parent(int channel);

// From here on the process and its threads may open the regular file of the descriptor `file` for reading, through
// name_of(file), and use descriptors that are already open; nothing else. Memory can no longer become executable, so
// libraries must be loaded before. This cannot be undone.
//
// Three layers: no new privileges; Landlock with one rule, skipped if the kernel does not support it; a filter of
// system calls (seccomp), omitted in sanitizer builds. A refused call fails with EACCES or EPERM. Returns the cause if
// a layer that the kernel supports cannot be set up; the caller must then not touch the file. Empty on success.
[[nodiscard]] std::string confine_to(int file);

// The name under which the file of an open descriptor can be opened again, even if its path has changed.
std::string name_of(int file);

} // namespace sandbox

#endif
