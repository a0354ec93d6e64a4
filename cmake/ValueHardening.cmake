# What makes a fault in a binary harder to exploit, for the targets of this project and for node libraries built against
# an installation of it:
#
#   VALUE_HARDENING_COMPILE_OPTIONS   guarded stack frames, checked calls of the C library (which need optimisation),
#                                     and on x86 marked targets of indirect calls
#   VALUE_HARDENING_LINK_OPTIONS      relocations that are all resolved at load time and then read-only
#
# Tests/Abi/hardening_test.py finds each of them in the built files.

set(VALUE_HARDENING_COMPILE_OPTIONS)
set(VALUE_HARDENING_LINK_OPTIONS)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
  list(APPEND VALUE_HARDENING_COMPILE_OPTIONS -fstack-protector-strong)
  if(NOT VALUE_SANITIZE)
    # The address sanitizer checks the same calls and does not see the checked ones.
    list(APPEND VALUE_HARDENING_COMPILE_OPTIONS
      "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
  endif()
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64|i[3-6]86)$")
    list(APPEND VALUE_HARDENING_COMPILE_OPTIONS -fcf-protection)
  endif()
  list(APPEND VALUE_HARDENING_LINK_OPTIONS LINKER:-z,relro LINKER:-z,now)
endif()
