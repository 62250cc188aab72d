// Runs long work in a thread, behind a modal box with a progress bar and Cancel.
#pragma once

#include "editors/long_work.h"

#include <functional>
#include <string>

namespace vesk {

// As user_questions::run_long_work. The box appears only if the work takes noticeably long; the main thread then serves
// events. Work that does not end within two seconds of Cancel is abandoned: reading from a file server that does not
// respond can block forever. Main thread.
bool run_behind_box(const std::string& what, const std::function<void(work_progress&)>& work);

} // namespace vesk
