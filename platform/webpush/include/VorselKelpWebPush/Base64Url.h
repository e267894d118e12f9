#pragma once

#include <string>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

namespace VorselKelp::webpush {

// How keys, signatures and tokens are written. Any thread.

/// Base64 with "-" and "_", without padding.
VORSELKELP_API std::string toBase64Url(std::string_view bytes);

/// The bytes of such a text; an error for padding, blanks and everything else that toBase64Url() does not
/// write.
VORSELKELP_API Result<std::string> fromBase64Url(std::string_view text);

}  // namespace VorselKelp::webpush
