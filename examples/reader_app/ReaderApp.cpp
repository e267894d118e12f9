#include "reader_app/ReaderApp.h"

#include <string_view>

namespace reader {

using VorselKelp::VorselBuilder;
using VorselKelp::VorselKellp;

std::shared_ptr<ReaderApp> ReaderApp::launch(std::shared_ptr<VorselKelp::platform::Platform> platform) {
  auto app = std::make_shared<ReaderApp>();
  VorselKellp::install(std::move(platform));
  VorselKellp::setVorselDelegate(app);
  VorselKellp::initialize(VorselBuilder("reader-key", appGroup).push().build());
  return app;
}

void ReaderApp::didReceive(const VorselKelp::platform::NotificationResponse& response) {
  VorselKellp::pushTrackOpen(true, response, nullptr);
}

void ReaderApp::handleURL(const std::string& url) {
  constexpr std::string_view chapters = "reader://chapter/";
  if (url.starts_with(chapters)) openedChapters_.push_back(url.substr(chapters.size()));
}

}  // namespace reader
