#pragma once

namespace VorselKelp::freedesktop {

// Where the desktop's portal for sandboxed applications is on the session's bus.
inline constexpr const char* portalService = "org.freedesktop.portal.Desktop";
inline constexpr const char* portalObject = "/org/freedesktop/portal/desktop";

}  // namespace VorselKelp::freedesktop
