#pragma once

#include <string>

namespace VorselKelp::simulator {

/// Removes the attachments' folders that processes which were killed left in their temporary folder. Those
/// younger than an hour stay: another process may be about to hand them over.
void removeStaleAttachments(const std::string& temporaryFolder);

}  // namespace VorselKelp::simulator
