# vorsel_library(TARGET EXPORT NAME INCLUDE FOLDER HEADERS SUBFOLDER): what the libraries that applications link have in
# common. They show what their public headers mark with VORSELKELP_API and nothing else, and are installed with them.
function(vorsel_library target)
  cmake_parse_arguments(arg "" "EXPORT;INCLUDE;HEADERS" "" ${ARGN})
  add_library(VorselKelp::${arg_EXPORT} ALIAS ${target})
  get_target_property(type ${target} TYPE)
  if(type STREQUAL INTERFACE_LIBRARY)
    target_include_directories(${target} INTERFACE $<BUILD_INTERFACE:${arg_INCLUDE}>)
  else()
    target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${arg_INCLUDE}>)
    target_compile_features(${target} PUBLIC cxx_std_20)
    vorsel_hidden(${target})
    set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  endif()
  if(type STREQUAL SHARED_LIBRARY)
    # Templates of the standard library and of Boost are shown by their own headers; the list takes them back.
    set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
    target_link_options(${target} PRIVATE LINKER:--no-undefined LINKER:--version-script=${exports})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${exports})
  endif()
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${arg_EXPORT})
  install(
    TARGETS ${target}
    EXPORT VorselKelpTargets
    INCLUDES
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(DIRECTORY ${arg_INCLUDE}/${arg_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endfunction()

# Compiles a target with the project's options, and so that others see of it only what is marked.
function(vorsel_hidden target)
  # What a project is built with is no business of those who link its installed libraries.
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:vorsel_options>)
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON DEFINE_SYMBOL "")
endfunction()

# vorsel_pkg_config(NAME DESCRIPTION TEXT [REQUIRES MODULES...] [LIBRARY FILE] [STATIC_REQUIRES MODULES...]
# [STATIC_LIBS FLAGS...]): a static library names all that it needs, for no file of its own remembers it.
function(vorsel_pkg_config name)
  cmake_parse_arguments(arg "" "DESCRIPTION;LIBRARY" "REQUIRES;STATIC_REQUIRES;STATIC_LIBS" ${ARGN})
  set(libs "")
  if(arg_LIBRARY)
    set(libs -L\${libdir} -l${arg_LIBRARY})
  endif()
  if(NOT BUILD_SHARED_LIBS)
    list(APPEND libs ${arg_STATIC_LIBS})
    list(APPEND arg_REQUIRES ${arg_STATIC_REQUIRES})
  endif()
  list(JOIN libs " " libs)
  list(JOIN arg_REQUIRES ", " requires)
  file(RELATIVE_PATH to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" to_prefix ${to_prefix})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
