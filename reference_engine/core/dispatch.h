// Loops over arrays that are compiled for the vectors of more than one processor.
#ifndef REFERENCE_ENGINE_CORE_DISPATCH_H
#define REFERENCE_ENGINE_CORE_DISPATCH_H

namespace reference_engine {

// A kernel twice, for any processor and for one with wide vectors, and the one that this processor can run. The kernel
// is an always_inline function, and contains all that it calls in its loops.
template <auto kernel>
struct Dispatch;
template <class Result, class... Argument, Result (*kernel)(Argument...)>
struct Dispatch<kernel> {
  static Result portable(Argument... argument) { return kernel(argument...); }
#ifdef __x86_64__
  [[gnu::target("avx2")]] static Result wide(Argument... argument) {
    return kernel(argument...);
  }
  static inline Result (*const best)(Argument...) = __builtin_cpu_supports("avx2") > 0 ? wide : portable;
#else
  static constexpr Result (*best)(Argument...) = portable;
#endif
};

} // namespace reference_engine

#endif
