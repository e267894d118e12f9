#pragma once

#include <string>
#include <vector>

#include "VorselKelp/Result.h"
#include "gateway/provider/ProviderTokens.h"

namespace brellixctl {

/// Keys as the command line has them: KEYID=TEAMID=FILE.
VorselKelp::Result<std::vector<gateway::ProviderKey>> readProviderKeys(const std::vector<std::string>& texts);

/// One of a file.
VorselKelp::Result<gateway::ProviderKey> readProviderKey(const std::string& identifier,
                                                         const std::string& team, const std::string& file);

}  // namespace brellixctl
