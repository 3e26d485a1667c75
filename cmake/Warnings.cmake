# One interface target that every target of this project links: warnings, sanitizers, and the
# code generation that the overlay's arithmetic relies on.
add_library(tessary_options INTERFACE)
target_compile_options(tessary_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough
  -Wno-missing-field-initializers)
if(TESSARY_WERROR)
  target_compile_options(tessary_options INTERFACE -Werror)
endif()
# Vertex positions and labels are exact to the last bit: no fused multiply-add, and no straight-line
# vectoriser, which in g++ 12 drops a narrowing to float when it packs an x and a y.
target_compile_options(tessary_options INTERFACE -ffp-contract=off -fno-tree-slp-vectorize)
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
