#include "VorselKelp/JSONAny.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "collection_server/CollectionServer.h"

namespace collection_server {

using VorselKelp::JSONAny;

std::string toJSON(const ReceivedRequest& request) {
  JSONAny::Dictionary headers;
  for (const auto& [name, value] : request.headers) headers.push_back({name, value});
  return VorselKelp::system::encodeLossy(JSONAny::Dictionary{{"time", request.time},
                                                             {"method", request.method},
                                                             {"path", request.path},
                                                             {"headers", std::move(headers)},
                                                             {"body", request.body}});
}

}  // namespace collection_server
