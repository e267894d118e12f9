#include "gateway/desktop/Authorizations.h"

#include <utility>

namespace gateway {
namespace {

constexpr std::chrono::hours told(1);
constexpr std::chrono::hours valid(12);
/// Subscriptions name any origin that they like.
constexpr std::size_t mostOrigins = 1000;

}  // namespace

VorselKelp::Result<std::string> Authorizations::valueFor(const std::string& endpoint,
                                                         const std::string& origin) {
  using std::chrono::system_clock;
  const auto now = std::chrono::floor<std::chrono::seconds>(system_clock::now());
  const auto found = signed_.find(origin);
  // Nor is one told that a clock which was set back has made last too long.
  if (found != signed_.end() && now < found->second.until && found->second.until <= now + told)
    return found->second.value;
  auto value = VorselKelp::webpush::vapidAuthorization(sender_.keys, endpoint, sender_.subject, now + valid);
  if (!value) return value;
  if (signed_.size() >= mostOrigins) signed_.clear();
  signed_.insert_or_assign(origin, Signed{*value, now + told});
  return value;
}

}  // namespace gateway
