// How sure a rule is that a file is in its language, and how much that rule counts.
#pragma once

#include <compare>
#include <ostream>
#include <string>

namespace velmar {

/// A degree of certainty; 0 is none and 1 is full. Sums and products may leave that range, and are
/// not cut off.
struct Confidence {
  float rawValue = 0;

  constexpr Confidence() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): a number is a confidence, `rule.confidence > 0.5F`
  constexpr Confidence(float value) : rawValue(value) {}

  static const Confidence failed;
  static const Confidence zero;
  static const Confidence low;
  static const Confidence medium;
  static const Confidence high;
  static const Confidence required;

  auto operator<=>(const Confidence&) const = default;

  friend constexpr Confidence operator+(Confidence a, Confidence b) {
    return a.rawValue + b.rawValue;
  }
  friend constexpr Confidence operator-(Confidence a, Confidence b) {
    return a.rawValue - b.rawValue;
  }
  friend constexpr Confidence operator*(Confidence a, Confidence b) {
    return a.rawValue * b.rawValue;
  }
  friend constexpr Confidence operator/(Confidence a, Confidence b) {
    return a.rawValue / b.rawValue;
  }
  constexpr Confidence& operator+=(Confidence other) { return *this = *this + other; }
  constexpr Confidence& operator-=(Confidence other) { return *this = *this - other; }
  constexpr Confidence& operator*=(Confidence other) { return *this = *this * other; }
  /// Without its sign.
  [[nodiscard]] constexpr Confidence magnitude() const {
    return rawValue < 0 ? -rawValue : rawValue;
  }

  /// The number, with as many digits as tell it from its neighbours: "0.5", "1.0".
  [[nodiscard]] std::string description() const;
};

inline constexpr Confidence Confidence::failed = 0.0F;
inline constexpr Confidence Confidence::zero = 0.0F;
inline constexpr Confidence Confidence::low = 0.2F;
inline constexpr Confidence Confidence::medium = 0.5F;
inline constexpr Confidence Confidence::high = 0.8F;
inline constexpr Confidence Confidence::required = 1.0F;

/// Writes the description.
std::ostream& operator<<(std::ostream& stream, Confidence confidence);

/// The weight of a rule among others.
struct LanguageDetectionPriority {
  float rawValue = 0;

  auto operator<=>(const LanguageDetectionPriority&) const = default;

  static const LanguageDetectionPriority required;
  static const LanguageDetectionPriority high;
  static const LanguageDetectionPriority medium;
  static const LanguageDetectionPriority low;
};

inline constexpr LanguageDetectionPriority LanguageDetectionPriority::required = {1.0F};
inline constexpr LanguageDetectionPriority LanguageDetectionPriority::high = {0.75F};
inline constexpr LanguageDetectionPriority LanguageDetectionPriority::medium = {0.5F};
inline constexpr LanguageDetectionPriority LanguageDetectionPriority::low = {0.25F};

} // namespace velmar
