// Long work in a thread, behind a modal box with a bar and Cancel.
#pragma once

#include "editors/long_work.h"

#include <functional>
#include <string>

namespace vesk {

// As user_questions::run_long_work. The box appears only when the work takes longer than a moment; the main thread then
// serves events. Work that does not end within two seconds after Cancel is given up: a file on a server that does not
// answer can hold up its reader for ever. Main thread.
bool run_behind_box(const std::string& what, const std::function<void(work_progress&)>& work);

} // namespace vesk
