# What stands between a mistake and its abuse, in every program of a release build
# (tests/install/hardening_test reads it back from the built files). Not in the everyday build, whose
# code is looked at with a debugger, and not under the sanitizers, which watch for the same mistakes.
if(CMAKE_BUILD_TYPE MATCHES "^Rel" AND NOT TESSARY_SANITIZE)
  set(is_release ON)
else()
  set(is_release OFF)
endif()
option(TESSARY_HARDEN "Harden all programs" ${is_release})
if(NOT TESSARY_HARDEN)
  return()
endif()

target_compile_options(tessary_options INTERFACE -fstack-protector-strong -fstack-clash-protection)
target_compile_definitions(tessary_options INTERFACE _GLIBCXX_ASSERTIONS)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|i.86")
  target_compile_options(tessary_options INTERFACE -fcf-protection=full)
endif()
# The checked calls of the C library are chosen by the optimiser.
string(TOUPPER "${CMAKE_BUILD_TYPE}" build_type)
if("${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${build_type}}" MATCHES "-O[123s]")
  target_compile_options(tessary_options INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
endif()
# Position independent, as Debian's compiler makes programs by default. What uses the toolkit asks for
# -fPIC by itself and must get it: with -fPIE after that the program dies before its first window.
target_link_options(tessary_options INTERFACE
  $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie> LINKER:-z,relro,-z,now,-z,noexecstack)
