# Warnings for our own targets; never exported to consumers.
add_library(tarnwick_warnings INTERFACE)
target_compile_options(
  tarnwick_warnings
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Wsign-conversion
            -Wnon-virtual-dtor
            -Wold-style-cast
            -Woverloaded-virtual
            -Wnull-dereference
            # GCC 12 sees overlaps in the concatenation of strings that are not there.
            $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
            -ffp-contract=off # scores are compared to the last bit: no fused multiply-add
            $<$<BOOL:${TARNWICK_WARNINGS_AS_ERRORS}>:-Werror>)
