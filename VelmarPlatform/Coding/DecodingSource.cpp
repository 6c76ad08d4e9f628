#include "VelmarPlatform/Coding/DecodingSource.h"

#include "VelmarPlatform/Basics/Precondition.h"

namespace velmar {

std::string_view describe(ValueKind kind) {
  switch (kind) {
  case ValueKind::nil:
    return "null";
  case ValueKind::boolean:
    return "a boolean";
  case ValueKind::integer:
  case ValueKind::unsignedInteger:
    return "an integer";
  case ValueKind::floating:
    return "a number";
  case ValueKind::text:
    return "a text";
  case ValueKind::date:
    return "a date";
  case ValueKind::data:
    return "data";
  case ValueKind::array:
    return "an array";
  case ValueKind::table:
    return "an object";
  }
  return "a value";
}

Date DecodingSource::date(CodedValue /*value*/) const {
  precondition(false, "This form has no dates of its own.");
  return {};
}

std::span<const std::byte> DecodingSource::data(CodedValue /*value*/) const {
  precondition(false, "This form has no bytes of its own.");
  return {};
}

bool DecodingSource::enterTable(CodedValue value, CodedChildren& walk) const {
  if (kind(value) != ValueKind::table)
    return false;
  walk = children(value);
  return true;
}

bool DecodingSource::readInteger(CodedValue value, std::int64_t& into) const {
  if (kind(value) != ValueKind::integer)
    return false;
  into = integer(value);
  return true;
}

bool DecodingSource::readText(CodedValue value, std::string_view& into) const {
  if (kind(value) != ValueKind::text)
    return false;
  into = text(value);
  return true;
}

bool DecodingSource::readIntegers(CodedValue array, std::vector<std::int64_t>& integers) const {
  CodedChildren walk = children(array);
  CodedValue element;
  while (nextElement(walk, element)) {
    if (kind(element) != ValueKind::integer)
      return false;
    integers.push_back(integer(element));
  }
  return true;
}

DecodingFailure DecodingSource::mismatch(CodedValue value, ValueKind expected) const {
  const ValueKind found = kind(value);
  return {found == ValueKind::nil ? DecodingErrorKind::valueNotFound
                                  : DecodingErrorKind::typeMismatch,
          "Expected " + std::string(describe(expected)) + ", but found " +
              std::string(describe(found)) + "."};
}

DecodingFailure DecodingSource::notRepresentable(CodedValue /*value*/,
                                                 std::string_view type) const {
  return {DecodingErrorKind::dataCorrupted,
          "The number is not representable as " + std::string(type) + "."};
}

DecodingFailure DecodingSource::missingKey(std::string_view key) const {
  return {DecodingErrorKind::keyNotFound, "The key “" + std::string(key) + "” is missing."};
}

DecodingFailure DecodingSource::atEnd() const {
  return {DecodingErrorKind::valueNotFound, "The array has no more elements."};
}

} // namespace velmar
