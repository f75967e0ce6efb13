# One interface target that every target of ours links: warnings, and the sanitizers when they are asked for.
add_library(quillox_flags INTERFACE)
target_compile_options(quillox_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Werror=return-type -Werror=switch
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
if(QUILLOX_SANITIZE)
  target_compile_options(quillox_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(quillox_flags INTERFACE -fsanitize=address,undefined)
endif()
