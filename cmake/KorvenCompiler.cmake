# Warnings, floating-point rules and sanitizers, shared by every target of the project.
#
# -ffp-contract=off and the absence of -ffast-math are what make the same input give the same bits in every
# build type; do not relax them for speed.
add_library(korven_compiler INTERFACE)
target_compile_options(korven_compiler INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Werror
  -ffp-contract=off)

if(KORVENRG_SANITIZER)
  target_compile_options(korven_compiler INTERFACE
    -fsanitize=${KORVENRG_SANITIZER} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(korven_compiler INTERFACE -fsanitize=${KORVENRG_SANITIZER})
endif()
