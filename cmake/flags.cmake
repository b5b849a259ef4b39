# What every target of ours is compiled with. Flags that results depend on stand here and not in
# the presets, so that no way of configuring can lose them.
add_library(irmcore-flags INTERFACE)
target_include_directories(irmcore-flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(irmcore-flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<BOOL:${IRMCORE_WERROR}>:-Werror>
  -fvisibility=hidden
  $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden>
  # A fused multiply-add rounds once where the formulas round twice: readings would differ
  # between processors.
  -ffp-contract=off
  # Nothing asks a square root for errno.
  -fno-math-errno
  # Messages carry a source file; let it be the same on every machine.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
  # The devices are reached through plain open, lseek, read and write, which a simulated board
  # can stand in for; the checked and the 64-bit variants are other functions.
  -U_FORTIFY_SOURCE -U_FILE_OFFSET_BITS)
