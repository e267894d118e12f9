#pragma once

#include <string>

#include "push/PayloadDecoder.h"
#include "push/PushTables.h"

namespace VorselKelp {

// What a payload makes the carousel do, decided before any of it is done. The content extension carries it
// out, and lint tells it. An error says why the carousel stops.

/// The messages of a carousel, at least one; whether there are several is told with them.
[[nodiscard]] Result<MultiMessagePush> carouselMessages(const Payload& payload);

/// The text that the URL of a page's picture is formed from. A sender that names no picture, or none that can
/// be asked for, has sent no carousel.
[[nodiscard]] Result<std::string> pagePicture(const P& message);

/// What opening a page does: of its trackers, of which there is one at least, the first is requested.
[[nodiscard]] Result<Conversion> pageConversion(const P& message);

/// The URL that a page's link opens; empty for a relative one, which leads nowhere outside of a page.
[[nodiscard]] Result<std::string> pageLink(const std::string& link);

}  // namespace VorselKelp
