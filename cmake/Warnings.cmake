# One interface target that every target of ours links: warnings, and the sanitizers when they are asked for. What a
# foreign program loads links the warnings alone; a sanitizer must be in a process from its start.
add_library(quillox_warnings INTERFACE)
target_compile_options(quillox_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Werror=return-type -Werror=switch
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
add_library(quillox_flags INTERFACE)
target_link_libraries(quillox_flags INTERFACE quillox_warnings)
if(QUILLOX_SANITIZE)
  target_compile_options(quillox_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer
    # The web engine is built without type information, and may run our copies of the standard library's templates.
    -fno-sanitize=vptr)
  target_link_options(quillox_flags INTERFACE -fsanitize=address,undefined)
endif()
