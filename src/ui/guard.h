// The edge between the toolkit's events and the program's own code: no exception passes it.
#pragma once

#include <functional>

namespace vesk {

// Runs `work`; an exception out of it is told in a box "Error". Main thread.
void attempt(const std::function<void()>& work) noexcept;

} // namespace vesk
