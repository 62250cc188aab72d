// The one function that engines are given.
#pragma once

namespace vesk {

// As described in sdk/vesk_engine.h. Finds the job through the calling thread; without a job it does nothing. Nothing
// thrown leaves it: the job is marked as failed instead.
void data_callback(const char* name, void* a1, void* a2, void* a3, void* a4, void* a5) noexcept;

} // namespace vesk
