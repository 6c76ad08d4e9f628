#include "VelmarParser/Query/CaptureTransformPredicate.h"

#include "VelmarParser/Query/PredicateArguments.h"

#include <array>

namespace velmar::QueryPredicates {

namespace {

using Name = CaptureTransform::Name;

constexpr std::array<std::string_view, 6> spellings{"prefix!",  "append!",   "strip!",
                                                    "replace!", "downcase!", "upcase!"};
constexpr std::array<std::string_view, 6> caseNames{"prefix",  "append",   "strip",
                                                    "replace", "downcase", "upcase"};

std::string_view usageOf(Name name) {
  switch (name) {
  case Name::prefix:
  case Name::append:
    return " capture argument…).";
  case Name::strip:
    return " capture [pattern]).";
  case Name::replace:
    return " capture pattern template).";
  case Name::downcase:
  case Name::upcase:
    return " capture).";
  }
  preconditionFailed("A capture transform has no known name.", std::source_location::current());
}

CaptureTransform::Action actionOf(Name name, detail::PredicateArguments& arguments) {
  switch (name) {
  case Name::prefix:
    arguments.require(!arguments.isAtEnd());
    return CaptureTransform::Prefix{arguments.remaining()};
  case Name::append:
    arguments.require(!arguments.isAtEnd());
    return CaptureTransform::Append{arguments.remaining()};
  case Name::strip: {
    if (arguments.isAtEnd())
      return CaptureTransform::Strip{};
    const std::string& pattern = arguments.string();
    arguments.expectEnd();
    return CaptureTransform::Strip{detail::compiledPattern(pattern)};
  }
  case Name::replace: {
    const std::string& pattern = arguments.string();
    QueryPredicateString replacement(arguments.string());
    arguments.expectEnd();
    return CaptureTransform::Replace{detail::compiledPattern(pattern), std::move(replacement)};
  }
  case Name::downcase:
    arguments.expectEnd();
    return CaptureTransform::Downcase{};
  case Name::upcase:
    arguments.expectEnd();
    return CaptureTransform::Upcase{};
  }
  preconditionFailed("A capture transform has no known name.", std::source_location::current());
}

} // namespace

std::span<const std::string_view> rawValuesOf(CaptureTransform::Name) {
  return spellings;
}

CaptureTransform::CaptureTransform(Name name, QueryPredicateArguments arguments) {
  detail::PredicateArguments reader(arguments, caseNames[static_cast<std::size_t>(name)],
                                    usageOf(name));
  capture = reader.capture();
  action = actionOf(name, reader);
}

} // namespace velmar::QueryPredicates
