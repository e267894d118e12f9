#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

namespace VorselKelp::webpush {

// Push services carry a payload and nothing beside it for its receiver. What a gateway has to tell goes
// within it: as its last member, "vorselGateway", which the receiver takes out again. Any thread.

/// What a gateway tells the receiver of a message.
struct Envelope {
  std::string identifier{};  ///< by which the sender knows the message; empty: not told
  /// The message replaces what is shown under the same one: at most 64 bytes of UTF-8 without control
  /// characters. Empty: it replaces nothing.
  std::string collapse{};
  /// Seconds since 1970 after which nobody wants the message any more.
  std::optional<std::int64_t> expiration{};
  friend bool operator==(const Envelope&, const Envelope&) = default;
};

/// The payload, a JSON object, with the envelope behind its last member; nothing else of it changes. An error
/// when it is no object, or a text of the envelope's is none of UTF-8 or too long.
VORSELKELP_API Result<std::string> putInto(const Envelope& envelope, std::string_view payload);

/// A payload and what was in it.
struct Unwrapped {
  std::string payload;  ///< byte for byte as it was before
  Envelope envelope{};
};

/// Takes the envelope out of a payload; one without stays as it is. An error says in one line what is wrong
/// with an envelope. Whether the rest is JSON is not looked at.
VORSELKELP_API Result<Unwrapped> unwrap(std::string_view payload);

}  // namespace VorselKelp::webpush
