#include "core/StorageKeys.h"

#include <array>
#include <cstddef>

namespace VorselKelp {

std::string_view keyText(StorageKey key) {
  static constexpr std::array<std::string_view, 48> texts{
      "vs_reg",
      "vs_tags",
      "vs_url",
      "vs_wd",
      "vs_t",
      "vs_contentExt",
      "vs_notif",
      "vs_adex",
      "vs_eEndpoint",
      "vs_utm",
      "vs_tok",
      "vs_badge",
      "vs_push_reg",
      "vs_unsc_token",
      "vs_ex_pa_dict",
      "vs_beacon_interval",
      "vs_openCounter",
      "vs_autoconf",
      "vs_adx",
      "vs_last_modified",
      "vs_crash",
      "vs_analytics",
      "vs_push",
      "vs_geofence",
      "vs_beacon",
      "vs_custom",
      "vs_location",
      "vs_appVersion",
      "vs_sdkVersion",
      "vs_category",
      "vs_sch_id",
      "vs_sch_int",
      "vs_notification_text",
      "vs_session_num",
      "vs_session_id",
      "vs_visitedPCount",
      "vs_uniq_session_id",
      "vs_uniq_session_first_time",
      "vs_user_id",
      "vs_partner_id",
      "vs_app_open_saved_at",
      "vs_app_opn_img_pth",
      "vs_app_opn_cpts",
      "vs_config_url",
      "vs_user_url",
      "vs_activity_url",
      "vs_crash_url",
      "vs_consent",
  };
  static_assert(static_cast<std::size_t>(StorageKey::consent) + 1 == texts.size());
  return texts[static_cast<std::size_t>(key)];
}

}  // namespace VorselKelp
