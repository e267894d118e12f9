# What every target of this project is compiled with.
add_library(vorsel_options INTERFACE)
target_compile_options(vorsel_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wconversion
                                                -Wno-sign-conversion)
if(VORSEL_WERROR)
  target_compile_options(vorsel_options INTERFACE -Werror)
endif()
if(VORSEL_SANITIZE)
  target_compile_options(vorsel_options INTERFACE -fsanitize=${VORSEL_SANITIZE} -fno-omit-frame-pointer
                                                  -fno-sanitize-recover=all)
  target_link_options(vorsel_options INTERFACE -fsanitize=${VORSEL_SANITIZE})
endif()
target_link_libraries(vorsel_options INTERFACE Threads::Threads)
