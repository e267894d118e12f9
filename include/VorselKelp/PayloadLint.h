#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/LocationRecords.h"
#include "VorselKelp/platform/Notification.h"

namespace VorselKelp {

/// What a push payload will do, told without doing it: by the same tables and the same decisions that the
/// extensions and the application work with. URLs of requests and links are those that go out, in the
/// characters of URLs alone; what an earlier ad left behind is not looked at, and servers are taken to
/// answer.
struct PayloadLint {
  enum class Root { push, campaign, none };

  /// What the notification will show once the service extension has prepared it.
  struct Shown {
    std::string title;
    std::string subtitle;
    std::string body;
    std::optional<platform::NotificationSound> sound;  ///< absent: silent
    std::optional<std::int64_t> badge;                 ///< as sent; an extension that counts sets its own
    std::string category;                              ///< empty: none
    std::vector<platform::NotificationAction> actions;
    std::optional<std::string> image;  ///< where it is downloaded from
    bool ad = false;                   ///< the ad's title, where it has one, and its picture win
  };

  /// What a tap does when the application leaves the link to the library.
  struct Tap {
    enum class Opens {
      nothing,
      browser,   ///< a page in the application's browser
      deepLink,  ///< the application gets it
      system     ///< the system opens it, from a carousel
    };
    std::string action;  ///< the button's; for notifications and pages the system's default action
    Opens opens = Opens::nothing;
    std::string url;                    ///< empty when nothing is opened
    std::vector<std::string> requests;  ///< in order
  };

  /// One text that goes into the store.
  struct Stored {
    std::string key;
    std::string entry;  ///< of a map: the entry, with the inner key behind a slash; else empty
    std::string text;
  };

  struct Page {
    std::optional<std::string> title;
    std::optional<std::string> text;
    std::optional<std::string> image;   ///< where it is downloaded from; absent: from nowhere
    std::vector<std::string> requests;  ///< in order, when it is shown for the first time
    Tap tap;
  };

  /// What the content extension shows.
  struct Carousel {
    bool arrows = false;
    /// When it opens, where the extension has a container for arrows and no earlier carousel has left them.
    std::vector<std::string> arrowRequests;
    std::vector<std::string> requests;  ///< of pictures, in order, when it opens
    std::vector<Page> pages;
  };

  /// A way in which it stops an extension on purpose.
  struct Stop {
    enum class When {
      preparing,       ///< in the service extension; the others are in the content extension
      carouselOpened,  ///< before anything is shown
      pageShown,
      pageTapped
    };
    When when = When::preparing;
    std::size_t page = 0;  ///< where it is up to one
    std::string text;
  };

  /// What the application gets of a silent push while push is on: at most one of the lists, and of a push
  /// with neither nothing that the library reads.
  struct Silent {
    std::optional<Geofences> geofences;
    std::optional<Beacons> beacons;
  };

  Root root = Root::none;             ///< what the service extension takes it for
  std::vector<std::string> errors;    ///< why it does not read, each with its path
  std::vector<Stop> stops;            ///< in the order in which they come
  std::vector<std::string> warnings;  ///< what is most likely not meant so, each with its path
  /// Nothing is shown, and no extension sees it: nothing below is told, and no root. Absent: it is shown.
  std::optional<Silent> silent;
  bool prepared = false;  ///< the system hands it to the service extension first
  Shown shows;
  std::vector<std::string> requests;  ///< while the notification is prepared, in order
  std::vector<Stored> stored;
  std::vector<Tap> taps;  ///< the notification's, then those of its buttons in their order
  /// Where there are messages for one, whatever the root; absent too where it can't be opened.
  std::optional<Carousel> carousel;
};

/// Never stops the process and never blocks. `identifier` stands for the notification request's. `original`
/// is what the system has made of the payload by itself: what is not prepared stays as it stands there. Any
/// thread; needs no installed platform.
[[nodiscard]] VORSELKELP_API PayloadLint lintPayload(std::string_view json, const std::string& identifier,
                                                     const platform::NotificationContent& original = {});

/// The JSON Schema of "push", "campaign", "activity", "users", "configuration" or "ad", made from the table
/// that reads or writes it; absent for any other name.
[[nodiscard]] VORSELKELP_API std::optional<std::string> payloadSchema(std::string_view name);

}  // namespace VorselKelp
