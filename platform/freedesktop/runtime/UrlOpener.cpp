#include "VorselKelpFreedesktop/UrlOpener.h"

#include <string_view>
#include <utility>

#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr std::size_t longestUrl = std::size_t{8} << 10;  // bytes

struct Opening {
  std::shared_ptr<platform::MainQueue> mainQueue;
  platform::UniqueFunction<void(Status)> answer;

  void end(Status status) {
    mainQueue->async([answer = std::move(answer), status = std::move(status)]() mutable { answer(status); });
  }
};

Status checked(const std::string& url) {
  if (url.size() > longestUrl) return Error{"the address is too long"};
  GError* error = nullptr;
  // A NUL byte would hide what follows it.
  GUri* parsed =
      url.find('\0') == std::string::npos ? g_uri_parse(url.c_str(), G_URI_FLAGS_NONE, &error) : nullptr;
  if (error) return Error{ErrorPtr(error)->message};
  if (!parsed) return Error{"the address has a NUL byte"};
  const bool file = std::string_view(g_uri_get_scheme(parsed)) == "file";
  g_uri_unref(parsed);
  if (file) return Error{"addresses of files are not opened"};
  return Done{};
}

void opened(GObject*, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Opening> opening(static_cast<Opening*>(data));
  GError* error = nullptr;
  g_app_info_launch_default_for_uri_finish(result, &error);
  opening->end(error ? Status(Error{ErrorPtr(error)->message}) : Status(Done{}));
}

}  // namespace

void openUrl(const std::string& url, std::shared_ptr<platform::MainQueue> mainQueue,
             platform::UniqueFunction<void(Status)> answer) {
  auto opening = std::make_unique<Opening>(Opening{std::move(mainQueue), std::move(answer)});
  if (auto usable = checked(url); !usable) return opening->end(std::move(usable));
  g_app_info_launch_default_for_uri_async(url.c_str(), nullptr, nullptr, opened, opening.release());
}

}  // namespace VorselKelp::freedesktop
