# What makes a memory error end the program instead of serving an attacker, for every target that links `vesk_flags`.
# tests/packaging/check_hardening reads it from the built files.

# The sanitizers find what these guard against, and the checked functions of the C library would hide it from them.
if(VESK_SANITIZE)
  return()
endif()

include(CheckCXXCompilerFlag)

target_compile_options(vesk_flags INTERFACE -fstack-protector-strong -fstack-clash-protection)
check_cxx_compiler_flag(-fcf-protection VESK_HAS_CF_PROTECTION) # x86 alone
if(VESK_HAS_CF_PROTECTION)
  target_compile_options(vesk_flags INTERFACE -fcf-protection)
endif()
target_link_options(vesk_flags INTERFACE -Wl,-z,relro -Wl,-z,now)

# Checked functions of the C library need optimisation.
target_compile_options(vesk_flags INTERFACE
  $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=3>)

# Checked indices and pointers of the standard library, but in targets with the property VESK_WITHOUT_ASSERTIONS, which
# say why at the property.
target_compile_definitions(vesk_flags INTERFACE
  $<$<NOT:$<BOOL:$<TARGET_PROPERTY:VESK_WITHOUT_ASSERTIONS>>>:_GLIBCXX_ASSERTIONS>)
