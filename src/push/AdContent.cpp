#include "push/AdContent.h"

namespace VorselKelp {

void applyAd(const std::shared_ptr<ImageAttachment>& images, const std::optional<AdexObject>& ad,
             const std::string& pushTitle, const std::shared_ptr<platform::NotificationContent>& content,
             const std::function<void()>& finish) {
  const Md* creative = ad ? ad->creative() : nullptr;
  content->title = creative && creative->title ? *creative->title : pushTitle;
  if (content->title.empty()) content->title = "No title";
  if (creative && creative->img) {
    images->attach(*creative->img, content, finish);
  } else {
    finish();
  }
}

}  // namespace VorselKelp
