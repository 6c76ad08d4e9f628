#include "VelmarPlatform/Coding/Vocabulary.h"

namespace velmar {

bool failForUnknownWord(Decoder from, std::string_view found, std::string_view words) {
  return from.fail(DecodingErrorKind::dataCorrupted, "Expected one of " + std::string(words) +
                                                         ", but found “" + std::string(found) +
                                                         "”.");
}

bool failForUnknownNumber(Decoder from, std::int64_t found) {
  return from.fail(DecodingErrorKind::dataCorrupted,
                   "The number " + std::to_string(found) + " stands for nothing known.");
}

} // namespace velmar
