#include "collection_server/SampleDocuments.h"

#include "VorselKelp/JSONAny.h"
#include "collection_server/CollectionServer.h"

namespace collection_server {

using VorselKelp::JSONAny;

std::string sampleConfiguration() {
  return R"({"push_config":{"prompts":[]},"analytics":{"enabled":true},"consent":{"enabled":true}})";
}

std::string sampleAd(const std::string& server) {
  const JSONAny creative = JSONAny::Dictionary{
      {"l2", "slot-7"},
      {"img", server + "/images/ad.png"},
      {"cmpid", 7},
      {"url", server + "/ad/landing"},
      {"title", "A quiet weekend by the sea"},
      {"cpm_t", JSONAny::List{server + "/ad/impression?l2=${l2}"}},
      {"cpv_t", JSONAny::List{server + "/ad/view?l2=${l2}"}},
      {"cpc_t", JSONAny::List{server + "/ad/click?l2=${l2}"}},
      {"creid", 11},
  };
  const JSONAny item = JSONAny::Dictionary{{"md", creative}, {"s", true}, {"w", 390}, {"h", 844}};
  const JSONAny ad = JSONAny::Dictionary{
      {"items", JSONAny::List{item}}, {"session_id", "feed-session"}, {"elapsed", 3}, {"ts", "0"}};
  const auto text = ad.encode();
  return text ? *text : std::string();
}

}  // namespace collection_server
