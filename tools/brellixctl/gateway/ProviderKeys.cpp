#include "brellixctl/gateway/ProviderKeys.h"

#include "brellixctl/Operations.h"
#include "brellixctl/TextFile.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::Result;

Result<gateway::ProviderKey> readProviderKey(const std::string& identifier, const std::string& team,
                                             const std::string& file) {
  const auto pem = readTextFile(file);
  if (!pem) return pem.error();
  auto key = gateway::VerifyingKey::ofPem(*pem);
  if (!key) return Error{file + ": " + key.error().description};
  return gateway::ProviderKey{identifier, team, *std::move(key)};
}

Result<std::vector<gateway::ProviderKey>> readProviderKeys(const std::vector<std::string>& texts) {
  std::vector<gateway::ProviderKey> keys;
  for (const auto& text : texts) {
    const auto first = text.find('=');
    const auto second = first == std::string::npos ? first : text.find('=', first + 1);
    if (second == std::string::npos || first == 0 || second == first + 1)
      return Error{"--provider-key takes KEYID=TEAMID=FILE, not \"" + text + "\"", wrongUsage};
    auto key = readProviderKey(text.substr(0, first), text.substr(first + 1, second - first - 1),
                               text.substr(second + 1));
    if (!key) return key.error();
    keys.push_back(*std::move(key));
  }
  return keys;
}

}  // namespace brellixctl
