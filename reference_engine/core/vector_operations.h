// Vector operations for CVODE, compiled with the engine. Those of Debian 12's library are built without optimisation,
// and took half of the time of an implicit run.
#ifndef REFERENCE_ENGINE_CORE_VECTOR_OPERATIONS_H
#define REFERENCE_ENGINE_CORE_VECTOR_OPERATIONS_H

#include <sundials/sundials_nvector.h>

namespace reference_engine {

// Makes a serial vector, and all clones of it, use the engine's operations.
void use_own_operations(N_Vector vector);

} // namespace reference_engine

#endif
