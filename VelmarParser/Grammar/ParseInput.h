// Hands a document's lines to the runtime's parser.
#pragma once

#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarPlatform/Basics/AtomicFlag.h"

#include <tree_sitter/api.h>

#include <array>

namespace velmar {

/// The parser's view of a text. Lives on the stack around a parse; the text must not change
/// meanwhile.
///
/// A read gives at most 1,024 code units of one line and points straight into it: nothing is copied
/// or allocated. Only where a line ends in a lone CR is its end copied, to show the parser an LF,
/// the one terminator that its rows count; and where the text ends in half a character.
class ParseInput {
public:
  static constexpr std::int64_t largestRead = 1024;

  explicit ParseInput(const DocumentText& text, const AtomicFlag* isCancelled = nullptr)
      : text_(&text), isCancelled_(isCancelled) {}
  ParseInput(const ParseInput&) = delete;
  ParseInput& operator=(const ParseInput&) = delete;

  /// The record for the runtime, good for as long as this object.
  [[nodiscard]] TSInput input();

private:
  static const char* read(void* payload, std::uint32_t byteIndex, TSPoint point,
                          std::uint32_t* bytesRead);

  const DocumentText* text_;
  const AtomicFlag* isCancelled_;
  std::array<char16_t, largestRead + 1> buffer_;
};

} // namespace velmar
