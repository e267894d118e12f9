#pragma once

#include <functional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/ContentExtension.h"

using GtkWidget = struct _GtkWidget;

namespace VorselKelp::gtk {

/// The messages of a campaign, one at a time with arrows to page through them, as a widget for a window of
/// the application's; a floating reference, which owns all that it shows. A core must be installed, and stay
/// while the widget is there: it gets the pictures and sends what each page that is seen, and each that is
/// opened, is to report. `open` gets the link of the page that the user opens. An error says why the campaign
/// can't be shown: its sender has left out what a carousel needs. Main thread.
VORSELKELP_API Result<GtkWidget*> carousel(const platform::DeliveredNotification& campaign,
                                           std::function<void(const std::string& url)> open);

}  // namespace VorselKelp::gtk
