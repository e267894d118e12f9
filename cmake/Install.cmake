# The package for find_package and for pkg-config. Libraries and headers are installed where they are made.
include(CMakePackageConfigHelpers)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/VorselKelp)
configure_package_config_file(
  cmake/VorselKelpConfig.cmake.in ${PROJECT_BINARY_DIR}/VorselKelpConfig.cmake
  INSTALL_DESTINATION ${package}
  PATH_VARS CMAKE_INSTALL_DATADIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VorselKelpConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VorselKelpConfig.cmake ${PROJECT_BINARY_DIR}/VorselKelpConfigVersion.cmake
              cmake/ShortLived.cmake cmake/InstallApplication.cmake
        DESTINATION ${package})
install(DIRECTORY cmake/application DESTINATION ${package})
install(
  EXPORT VorselKelpTargets
  NAMESPACE VorselKelp::
  DESTINATION ${package})

vorsel_pkg_config(
  vorselkelp
  DESCRIPTION "Push notifications and engagement: the core"
  LIBRARY vorselkelp
  STATIC_LIBS -lvorselkelp_url -lboost_json -pthread)
# A shared core holds the facade and lint.
if(BUILD_SHARED_LIBS)
  vorsel_pkg_config(
    brellixpush
    DESCRIPTION "Push notifications and engagement: the publisher facade"
    REQUIRES vorselkelp)
  vorsel_pkg_config(
    vorselkelp-lint
    DESCRIPTION "Push notifications and engagement: what payloads will do"
    REQUIRES vorselkelp)
else()
  vorsel_pkg_config(
    brellixpush
    DESCRIPTION "Push notifications and engagement: the publisher facade"
    REQUIRES vorselkelp
    LIBRARY brellixpush)
  vorsel_pkg_config(
    vorselkelp-lint
    DESCRIPTION "Push notifications and engagement: what payloads will do"
    REQUIRES vorselkelp
    LIBRARY vorselkelp_lint)
endif()
vorsel_pkg_config(
  vorselkelp-posix
  DESCRIPTION "Push notifications and engagement: what any POSIX process has"
  REQUIRES vorselkelp
  LIBRARY vorselkelp_posix
  STATIC_REQUIRES sqlite3)
vorsel_pkg_config(
  vorselkelp-system
  DESCRIPTION "Push notifications and engagement: what a phone's system does for an application"
  REQUIRES vorselkelp-posix
  LIBRARY vorselkelp_system)
vorsel_pkg_config(
  vorselkelp-webpush
  DESCRIPTION "Push notifications and engagement: encrypted messages for push services"
  REQUIRES vorselkelp
  LIBRARY vorselkelp_webpush
  STATIC_REQUIRES libcrypto)
vorsel_pkg_config(
  vorselkelp-simulator
  DESCRIPTION "Push notifications and engagement: a phone on a desk"
  REQUIRES vorselkelp-system
  LIBRARY vorselkelp_simulator)
vorsel_pkg_config(
  vorselkelp-testing
  DESCRIPTION "Push notifications and engagement: a platform in memory, for tests"
  REQUIRES vorselkelp
  LIBRARY vorselkelp_testing)
if(TARGET vorselkelp_freedesktop)
  vorsel_pkg_config(
    vorselkelp-freedesktop
    DESCRIPTION "Push notifications and engagement: the desktop session's services"
    REQUIRES vorselkelp-system
    LIBRARY vorselkelp_freedesktop
    STATIC_REQUIRES gio-unix-2.0)
endif()
if(TARGET vorselkelp_gtk)
  vorsel_pkg_config(
    vorselkelp-gtk
    DESCRIPTION "Push notifications and engagement: screens in an application's own windows"
    REQUIRES vorselkelp-freedesktop
    LIBRARY vorselkelp_gtk
    STATIC_REQUIRES gtk4)
  vorsel_pkg_config(
    vorselkelp-webkit
    DESCRIPTION "Push notifications and engagement: web pages"
    REQUIRES vorselkelp-gtk
    LIBRARY vorselkelp_webkit
    STATIC_REQUIRES webkitgtk-6.0)
  vorsel_pkg_config(
    vorselkelp-simulator-screen
    DESCRIPTION "Push notifications and engagement: the window of a phone on a desk"
    REQUIRES vorselkelp-simulator vorselkelp-webkit
    LIBRARY vorselkelp_simulator_screen)
endif()
