#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/PayloadLint.h"
#include "VorselKelp/Result.h"
#include "collection_server/CollectionServer.h"

namespace brellixctl {

/// Plays the servers that a payload names, on this machine: each has a server of its own that stands for it,
/// so that two stay two. What is foretold to be a picture or an ad is answered with one.
class StandIns {
 public:
  /// Of no server at all.
  StandIns() = default;
  /// Starts one for each scheme, host and port at the beginning of a text of `payload`, as far as a host is
  /// written in plain ASCII.
  static VorselKelp::Result<StandIns> start(const std::string& payload, const VorselKelp::PayloadLint& lint);

  /// The payload with the stand-ins' addresses, else byte by byte as it was.
  [[nodiscard]] std::string masked(const std::string& payload) const;
  /// A text of the trial with the payload's own addresses.
  [[nodiscard]] std::string original(std::string text) const;
  /// The stand-ins by what they stand for.
  [[nodiscard]] std::map<std::string, std::string> addresses() const;

 private:
  struct StandIn {
    std::string origin;   ///< as the payload writes it, such as "https://news.example"
    std::string address;  ///< with the letters of the origin's scheme
    std::unique_ptr<collection_server::CollectionServer> server;
  };
  std::vector<StandIn> standIns_;
};

}  // namespace brellixctl
