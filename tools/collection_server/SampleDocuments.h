#pragma once

#include <string>

namespace collection_server {

/// An ad feed's answer with one ad whose picture and trackers lead to `server`.
std::string sampleAd(const std::string& server);

/// A page for the in-app browser.
std::string sampleArticle(const std::string& server);

/// A prompt script: shows the configuration's first prompt that is not the system's own as a card with two
/// buttons, which fire the events that the page listens for.
std::string samplePromptScript();

}  // namespace collection_server
