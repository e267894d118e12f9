#pragma once

#include <string>
#include <string_view>

#include "VorselKelp/Result.h"
#include "crypto/OpenSsl.h"

namespace VorselKelp::webpush {

inline constexpr std::size_t scalarSize = 32;
inline constexpr std::size_t pointSize = 65;

/// A key on P-256: a point and, of a private one, its scalar. Points are uncompressed, scalars begin with
/// their highest byte.
class CurveKey {
 public:
  static Result<CurveKey> make();
  /// A private key; an error when the scalar is none of the curve.
  static Result<CurveKey> ofScalar(std::string_view scalar);
  /// A private key whose point is known, and is not worked out again: that it is the scalar's is the caller's
  /// word.
  static Result<CurveKey> ofPair(std::string_view scalar, std::string_view point);
  /// A public key; an error when the point does not lie on the curve.
  static Result<CurveKey> ofPoint(std::string_view point);
  /// A private key as PEM, not encrypted.
  static Result<CurveKey> ofPem(std::string_view text);

  [[nodiscard]] std::string point() const;
  /// Of a private key alone.
  [[nodiscard]] Secret<scalarSize> scalar() const;
  [[nodiscard]] Result<Secret<scalarSize>> agree(const CurveKey& other) const;
  /// SHA-256 of the text, signed: 64 bytes, r and s.
  [[nodiscard]] Result<std::string> sign(std::string_view text) const;
  /// PKCS#8.
  [[nodiscard]] Result<std::string> pem() const;

 private:
  explicit CurveKey(Key key) : key_(std::move(key)) {}
  /// Null when they are none of the curve's.
  static Key assemble(std::string_view point, const BIGNUM* scalar);
  static Result<CurveKey> completed(const Key& key);

  Key key_;
};

}  // namespace VorselKelp::webpush
