// What a form of text or bytes must offer so that records can be encoded into it: it is told one
// value after the other, from the root down. The counterpart of DecodingSource.
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"
#include "VelmarPlatform/Dates/ISO8601.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace velmar {

/// Told exactly one value: a scalar, or a table or an array with all that is in it. Within a table
/// each value follows its key. Encoder keeps to that, so a sink needn't check it.
///
/// Whatever a form can't hold is thrown as an EncodingFailure, which Encoder turns into an
/// EncodingError with the place.
class EncodingSink {
public:
  /// A sink that puts the members of a table in the order of their keys would rather be told them
  /// in that order.
  explicit EncodingSink(bool sortsKeys = false) noexcept : sortsKeys_(sortsKeys) {}
  EncodingSink(const EncodingSink&) = delete;
  EncodingSink& operator=(const EncodingSink&) = delete;
  virtual ~EncodingSink() = default;

  virtual void nil() = 0;
  virtual void boolean(bool value) = 0;
  virtual void integer(std::int64_t value) = 0;
  virtual void unsignedInteger(std::uint64_t value) = 0;
  virtual void floating(double value) = 0;
  /// Shorter where a number came from single precision.
  virtual void floating(float value) = 0;
  /// Valid UTF-8.
  virtual void text(std::string_view value) = 0;
  /// A text in ISO 8601, in whole seconds, unless the form has dates of its own.
  virtual void date(Date value);
  /// A text in base64 unless the form has bytes of its own.
  virtual void data(std::span<const std::byte> value);

  virtual void beginArray() = 0;
  virtual void endArray() = 0;
  virtual void beginTable() = 0;
  virtual void key(std::string_view key) = 0;
  virtual void endTable() = 0;
  [[nodiscard]] bool sortsKeys() const noexcept { return sortsKeys_; }

  /// An array of integers, as if it was told one by one. For long ones, which this spares a call
  /// for each element.
  virtual void integers(std::span<const std::int64_t> values);

private:
  bool sortsKeys_;
};

/// That a form can't hold a value; `description` is a sentence.
struct EncodingFailure {
  std::string_view description;
};

} // namespace velmar
