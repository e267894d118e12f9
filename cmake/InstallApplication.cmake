# vorselkelp_install_application(TARGET DESCRIPTION FILE [DESKTOP FILE] [ICON FILES...] [COMPONENT NAME]
# [EXCLUDE_FROM_ALL]): installs a desktop application with all that it needs to be found by its session, to get pushes
# while it does not run, and to be started by a tap:
#
#   bin/                        the application
#   share/<id>/<id>.json        its description, where system::installedDescription() looks
#   share/applications/         its desktop entry (DESKTOP in place of a plain one), and its agent's, which menus leave out
#   share/dbus-1/services/      how the session's bus starts either
#   share/icons/hicolor/        its icons: PNG files by their sizes, SVG
#   share/vorselkelp/           the library's pictures
#   libexec/<id>/               the push agent and the ready-made service extension
#
# A shared VorselKelp keeps its own of the last two, which need its libraries. A relative "programs.service" of the
# description counts from share/<id>. The paths in the files are those of the prefix that it is installed under.
function(vorselkelp_install_application target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "EXCLUDE_FROM_ALL" "DESCRIPTION;DESKTOP;COMPONENT" "ICON")
  if(NOT TARGET VorselKelp::PushAgent)
    message(FATAL_ERROR "This VorselKelp was built without a push agent (VORSEL_DESKTOP=ON; GTK 4.8, WebKitGTK 6.0)")
  endif()
  include(GNUInstallDirs)
  set(part "")
  if(arg_COMPONENT)
    list(APPEND part COMPONENT ${arg_COMPONENT})
  endif()
  if(arg_EXCLUDE_FROM_ALL)
    list(APPEND part EXCLUDE_FROM_ALL)
  endif()
  vorselkelp_read_description(${arg_DESCRIPTION})

  install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ${part})
  install(FILES ${arg_DESCRIPTION} DESTINATION ${CMAKE_INSTALL_DATADIR}/${id} RENAME ${id}.json ${part})
  get_target_property(kind VorselKelp::Core TYPE)
  if(kind STREQUAL SHARED_LIBRARY)
    set(agent $<TARGET_FILE:VorselKelp::PushAgent>)
  else()
    set(agent ${CMAKE_INSTALL_LIBEXECDIR}/${id}/vorsel-push-agent)
    install(PROGRAMS $<TARGET_FILE:VorselKelp::PushAgent> $<TARGET_FILE:VorselKelp::PushService>
            DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/${id} ${part})
    install(DIRECTORY ${VorselKelp_RESOURCES}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vorselkelp ${part})
  endif()
  foreach(icon IN LISTS arg_ICON)
    vorselkelp_icon_folder(${icon} folder extension)
    install(FILES ${icon} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${folder}/apps RENAME ${id}${extension} ${part})
  endforeach()

  set(entry ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/application/application.desktop.in)
  if(arg_DESKTOP)
    get_filename_component(entry ${arg_DESKTOP} ABSOLUTE)
    file(STRINGS ${entry} activatable REGEX "^DBusActivatable=true$")
    if(NOT activatable)
      message(FATAL_ERROR "${entry} needs a line DBusActivatable=true: a tap starts the application over the bus")
    endif()
  endif()
  # The prefix is known when it is installed.
  install(
    CODE "set(id \"${id}\")
  set(name [==[${name}]==])
  set(entry [==[${entry}]==])
  set(written [==[${CMAKE_CURRENT_BINARY_DIR}/${id}]==])
  set(data [==[${CMAKE_INSTALL_DATADIR}]==])
  set(program [==[${CMAKE_INSTALL_BINDIR}/$<TARGET_FILE_NAME:${target}>]==])
  set(agent [==[${agent}]==])
  include([==[${CMAKE_CURRENT_FUNCTION_LIST_DIR}/application/Activation.cmake]==])"
    ${part})
endfunction()

# What the session has to know of it: its identifier, and its name as a desktop entry has it.
function(vorselkelp_read_description file)
  get_filename_component(file ${file} ABSOLUTE)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(READ ${file} text)
  string(JSON id ERROR_VARIABLE wrong GET "${text}" bundleIdentifier)
  if(wrong OR NOT id MATCHES "^[A-Za-z_-][A-Za-z0-9_-]*(\\.[A-Za-z_-][A-Za-z0-9_-]*)+$")
    message(FATAL_ERROR "${file}: \"bundleIdentifier\" must be a name on the bus, such as com.example.reader (${wrong}${id})")
  endif()
  string(JSON name ERROR_VARIABLE missing GET "${text}" name)
  if(missing)
    set(name ${id})
  endif()
  string(REGEX REPLACE "[\r\n\t]" " " name "${name}")
  string(REPLACE "\\" "\\\\" name "${name}")
  set(id ${id} PARENT_SCOPE)
  set(name "${name}" PARENT_SCOPE)
endfunction()

# The folder of a theme of icons for one of these files: a PNG file tells its width in its header.
function(vorselkelp_icon_folder file folder extension)
  get_filename_component(ending ${file} LAST_EXT)
  set(size scalable)
  if(ending STREQUAL .png)
    get_filename_component(file ${file} ABSOLUTE)
    file(READ ${file} width OFFSET 16 LIMIT 4 HEX)
    math(EXPR width "0x${width}")
    set(size ${width}x${width})
  elseif(NOT ending STREQUAL .svg)
    message(FATAL_ERROR "${file}: an icon is a PNG or SVG file")
  endif()
  set(${folder} ${size} PARENT_SCOPE)
  set(${extension} ${ending} PARENT_SCOPE)
endfunction()
