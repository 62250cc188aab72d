// The function passed to engines.
#pragma once

namespace vesk {

// As described in sdk/vesk_engine.h. The calling thread determines the job; without a job it does nothing. No exception
// leaves it: the job is marked as failed instead.
// thrown leaves it: the job is marked as failed instead.
void data_callback(const char* name, void* a1, void* a2, void* a3, void* a4, void* a5) noexcept;

} // namespace vesk
