// The boundary between Qt's events and our code: exceptions do not cross it.
#pragma once

#include <functional>

namespace vesk {

// Runs `work`; shows an exception from it in a box "Error". Main thread.
void attempt(const std::function<void()>& work) noexcept;

} // namespace vesk
