# What every target of this project is compiled with.
add_library(vorsel_options INTERFACE)
target_compile_options(vorsel_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wconversion
                                                -Wno-sign-conversion)
# Nothing here gains by what -O3 adds, and an extension's start is made of reading its pages.
target_compile_options(vorsel_options INTERFACE $<$<CONFIG:Release>:-O2>)
# What a program does not call is left out of it.
target_compile_options(vorsel_options INTERFACE -ffunction-sections -fdata-sections)
target_link_options(vorsel_options INTERFACE -Wl,--gc-sections)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # Both warn about the standard library's own code once it is inlined, in texts and variants that are used properly.
  target_compile_options(vorsel_options INTERFACE -Wno-restrict -Wno-maybe-uninitialized)
endif()
if(VORSEL_WERROR)
  target_compile_options(vorsel_options INTERFACE -Werror)
endif()
if(VORSEL_SANITIZE)
  target_compile_options(vorsel_options INTERFACE -fsanitize=${VORSEL_SANITIZE} -fno-omit-frame-pointer
                                                  -fno-sanitize-recover=all)
  target_link_options(vorsel_options INTERFACE -fsanitize=${VORSEL_SANITIZE})
endif()
target_link_libraries(vorsel_options INTERFACE Threads::Threads)
