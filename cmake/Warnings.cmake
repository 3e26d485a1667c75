# One interface target that every target of this project links: warnings and sanitizers.
add_library(tessary_options INTERFACE)
target_compile_options(tessary_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough
  -Wno-missing-field-initializers)
# g++ 12 sees copies that overlap inside of std::string at -O2 (GCC bug 105651).
target_compile_options(tessary_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(TESSARY_WERROR)
  target_compile_options(tessary_options INTERFACE -Werror)
endif()
if(TESSARY_SANITIZE)
  target_compile_options(tessary_options INTERFACE -fsanitize=${TESSARY_SANITIZE}
    -fno-omit-frame-pointer)
  target_link_options(tessary_options INTERFACE -fsanitize=${TESSARY_SANITIZE})
  if(TESSARY_SANITIZE MATCHES "undefined")
    target_compile_options(tessary_options INTERFACE -fno-sanitize-recover=all)
  endif()
  if(TESSARY_SANITIZE MATCHES "thread")
    # g++ warns that fences are not seen by the thread sanitizer; ours are only in the libraries.
    target_compile_options(tessary_options INTERFACE -Wno-tsan)
  endif()
endif()

# For the rooms whose arithmetic is exact to the last bit, as vertex positions and labels are: no fused
# multiply-add, and no straight-line vectoriser, which in g++ 12 drops a narrowing to float when it
# packs an x and a y. Whoever links such a room, and so compiles what stands in its headers, gets it too.
add_library(tessary_exact_arithmetic INTERFACE)
target_compile_options(tessary_exact_arithmetic INTERFACE -ffp-contract=off
  -fno-tree-slp-vectorize)
