// The memory of the machine.
#pragma once

#include <cstdint>

namespace vesk {

std::uint64_t physical_memory(); // bytes; 0 when the system does not say

} // namespace vesk
