# What is kept in files and compiled in.

# vorsel_script(TARGET NAME FILE): compiles a script into a library, as the text NAME in the header "FILE.h".
function(vorsel_script target name file)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(READ ${file} script)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/embedded)
  file(
    CONFIGURE
    OUTPUT ${folder}/${file}.h
    CONTENT "#pragma once\n\n#include <string_view>\n\ninline constexpr std::string_view ${name} = R\"js(${script})js\";\n"
    @ONLY)
  target_include_directories(${target} PRIVATE ${folder})
endfunction()

# vorsel_bytes(TARGET NAME FILE): compiles a file into a library, as the array of bytes NAME in the header "FILE.h".
function(vorsel_bytes target name file)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(READ ${file} hex HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/embedded)
  file(CONFIGURE OUTPUT ${folder}/${file}.h CONTENT "#pragma once\n\ninline constexpr unsigned char ${name}[] = {${bytes}};\n" @ONLY)
  target_include_directories(${target} PRIVATE ${folder})
endfunction()
