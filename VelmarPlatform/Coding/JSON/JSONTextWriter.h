// Writes JSON text. Strings keep all but what must be escaped, "/" included; numbers are as short
// as they can be and still be read as the same number, whole ones without a fraction.
//
//     std::string text;
//     JSONTextWriter writer(text, {.sortedKeys = true});
//     writer.beginTable();
//     writer.key("line");
//     writer.integer(3);
//     writer.endTable();   // {"line":3}
#pragma once

#include "VelmarPlatform/Coding/EncodingSink.h"
#include "VelmarPlatform/Coding/JSON/JSONKeySorter.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace velmar {

struct JSONTextOptions {
  /// The members of each object in ascending order of their keys' bytes; those with the same key in
  /// the order in which they came.
  bool sortedKeys = false;
  /// Each element and member on a line of its own, indented by two spaces a level.
  bool pretty = false;
};

/// For one value, at any depth; its own work takes no stack. O(size), with sorted keys
/// O(size + keys * log keys).
class JSONTextWriter final : public EncodingSink {
public:
  /// Appends to `text`, which is borrowed, and which nobody else touches until the value is written
  /// or the writer gone. A value that isn't finished by then leaves `text` as it was.
  explicit JSONTextWriter(std::string& text, JSONTextOptions options = {});
  ~JSONTextWriter() override;

  void nil() override;
  void boolean(bool value) override;
  void integer(std::int64_t value) override;
  void integers(std::span<const std::int64_t> values) override;
  void unsignedInteger(std::uint64_t value) override;
  /// Throws EncodingFailure for NaN and the infinities, which JSON doesn't have.
  void floating(double value) override;
  void floating(float value) override;
  void text(std::string_view value) override;

  void beginArray() override;
  void endArray() override;
  void beginTable() override;
  void key(std::string_view key) override;
  void endTable() override;

private:
  void beginValue(std::size_t room);
  void endValue();
  void finish();
  void beginContainer(char bracket);
  void endContainer(char bracket);
  void put(char letter) { *at_++ = letter; }
  void putLiteral(std::string_view letters);
  void putSeparator();
  void putNewLine();
  void putQuoted(std::string_view value);
  void putKeyInLayout(std::string_view key);
  void putEscaped(std::string_view value);
  void putEscape(char letter);
  void putInteger(std::int64_t value);
  void putDigits(std::uint64_t value);
  void putManyDigits(std::uint64_t value);
  template <class Floating>
  void putFloating(Floating value);
  void reserve(std::size_t room);
  void grow(std::size_t room);
  [[nodiscard]] std::size_t written() const;

  std::string& text_;
  JSONTextOptions options_;
  std::size_t start_; // where the value starts
  char* at_;          // what is written ends here; text_ itself ends at end_
  char* end_;
  std::size_t depth_ = 0;
  bool isFirst_ = true;   // nothing stands yet in the array or table
  bool isInPlace_ = true; // at the root or behind a key: no comma is due
  bool isFinished_ = false;
  detail::JSONKeySorter sorter_;
};

} // namespace velmar
