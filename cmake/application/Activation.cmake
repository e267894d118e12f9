# Run when an application is installed: writes the files by which the session finds it and its push agent, with the
# paths that they have under this prefix.
get_filename_component(prefix "${CMAKE_INSTALL_PREFIX}" ABSOLUTE)
set(description ${data}/${id}/${id}.json)
foreach(path program agent description)
  cmake_path(ABSOLUTE_PATH ${path} BASE_DIRECTORY "${prefix}" NORMALIZE)
  # The two formats of command lines escape these in different ways.
  if(${path} MATCHES "[\"`$%\\\\]")
    message(FATAL_ERROR "${${path}} can't be installed so that the session starts it: its path has one of \" ` $ % \\")
  endif()
endforeach()

cmake_path(ABSOLUTE_PATH data BASE_DIRECTORY "${prefix}" NORMALIZE)
set(templates ${CMAKE_CURRENT_LIST_DIR})
configure_file(${entry} "${written}/${id}.desktop" @ONLY)
configure_file(${templates}/agent.desktop.in "${written}/${id}.Push.desktop" @ONLY)
configure_file(${templates}/application.service.in "${written}/${id}.service" @ONLY)
configure_file(${templates}/agent.service.in "${written}/${id}.Push.service" @ONLY)
file(INSTALL "${written}/${id}.desktop" "${written}/${id}.Push.desktop" DESTINATION "${data}/applications")
file(INSTALL "${written}/${id}.service" "${written}/${id}.Push.service" DESTINATION "${data}/dbus-1/services")
