// Dates of ISO 8601 on any bytes: what is read is written in a form that reads the same.

#include "VelmarPlatform/Dates/ISO8601.h"

#include "VelmarPlatform/Basics/Precondition.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

using namespace velmar;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto date = parseISO8601({reinterpret_cast<const char*>(data), size});
  if (date)
    precondition(parseISO8601(formatISO8601(*date, SecondFraction::whereNeeded)) == date,
                 "A date that was written reads the same.");
  return 0;
}
