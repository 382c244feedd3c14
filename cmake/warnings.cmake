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
            -Wno-restrict # GCC 12 sees overlaps in the concatenation of strings that are not there
            -ffp-contract=off # scores are compared to the last bit: no fused multiply-add
            $<$<BOOL:${TARNWICK_WARNINGS_AS_ERRORS}>:-Werror>)
