// JSON text in any bytes: it is refused with a place in it, or what is written of it reads as the
// same again, in each layout, and its tape keeps to its size.

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Coding/JSON/JSONTape.h"
#include "VelmarPlatform/Coding/JSON/JSONTextWriter.h"
#include "VelmarPlatform/Coding/Transcoding.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using namespace velmar;

namespace {

std::string written(const JSONTape& tape, JSONTextOptions options) {
  std::string text;
  JSONTextWriter writer(text, options);
  transcode(tape, tape.root(), writer);
  return text;
}

std::string rewritten(std::string_view text, JSONTextOptions options) {
  return written(JSONTape(text), options);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    const JSONTape tape(text);
    precondition(isValidUTF8(text), "A JSON text is valid UTF-8.");
    precondition(tape.byteCount() <= 4 * static_cast<std::int64_t>(size) + 16,
                 "A tape takes four bytes for each of the text.");
    const std::string compact = written(tape, {});
    precondition(rewritten(compact, {}) == compact, "What is written reads as the same.");
    precondition(rewritten(written(tape, {.pretty = true}), {}) == compact,
                 "White space means nothing.");
    const std::string sorted = written(tape, {.sortedKeys = true});
    precondition(sorted.size() == compact.size(), "Sorting loses nothing.");
    precondition(rewritten(sorted, {.sortedKeys = true}) == sorted, "What is sorted stays so.");
  } catch (const DecodingError& error) {
    precondition(error.byteOffset() >= 0 && *error.byteOffset() <= static_cast<std::int64_t>(size),
                 "A refusal says where.");
    precondition(isValidUTF8(error.message()), "A refusal is a sentence.");
  }
  return 0;
}
