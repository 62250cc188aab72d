// The boundary between the toolkit's events and the program's code: no exception passes it.
#pragma once

#include <functional>

namespace vesk {

// Runs `work`; an exception from it is shown in a box "Error". Main thread.
void attempt(const std::function<void()>& work) noexcept;

} // namespace vesk
