#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Result.h"

namespace collection_server {

/// One request as it came.
struct ReceivedRequest {
  double time = 0;  ///< seconds since 1970
  std::string method;
  std::string path;  ///< with its query
  std::map<std::string, std::string> headers;
  std::string body;
};

/// The request as one JSON object without line breaks.
std::string toJSON(const ReceivedRequest& request);

struct ServerOptions {
  int port = 0;  ///< 0: any free one
  /// The remote configuration that every application gets.
  std::string document;
  /// The script that the publisher's permission page loads.
  std::string script;
  /// Answers these paths (without query) with these codes.
  std::map<std::string, int> statuses;
  /// Answers these paths (without query, as they are sent) like those.
  std::map<std::string, std::string> aliases;
  /// Each open connection holds one, so a fleet's must all find theirs.
  std::size_t threads = 128;
  /// Hears of every request before it is answered; one call at a time.
  std::function<void(const ReceivedRequest&)> received;
};

/// A stand-in for every server that the library talks to, on the loopback interface: remote configuration,
/// activity and users, trackers, events, ad feed and images. Serves on threads of its own until it is
/// destroyed.
class CollectionServer {
 public:
  static VorselKelp::Result<std::unique_ptr<CollectionServer>> start(ServerOptions options);
  ~CollectionServer();
  CollectionServer(const CollectionServer&) = delete;
  CollectionServer& operator=(const CollectionServer&) = delete;

  [[nodiscard]] int port() const;
  /// Scheme, host and port.
  [[nodiscard]] std::string url() const;

 private:
  class Implementation;
  explicit CollectionServer(std::unique_ptr<Implementation> implementation);
  std::unique_ptr<Implementation> implementation_;
};

/// A remote configuration that switches nothing.
std::string sampleConfiguration();
/// One that asks for the publisher's permission page first, which offers the site's news.
std::string promptingConfiguration();

}  // namespace collection_server
