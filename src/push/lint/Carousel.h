#pragma once

#include "VorselKelp/PayloadLint.h"
#include "push/PayloadDecoder.h"

namespace VorselKelp {

/// Tells what the content extension makes of the messages of a payload, when it has any, and warns of what is
/// most likely not meant so. Behind what the service extension does: an ad that is left pending counts.
void tellCarousel(PayloadLint& lint, const Payload& payload);

}  // namespace VorselKelp
