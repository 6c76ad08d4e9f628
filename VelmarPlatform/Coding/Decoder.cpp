#include "VelmarPlatform/Coding/Decoder.h"

#include "VelmarPlatform/Coding/Base64.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace velmar {
namespace {

/// Tables of more members than this are looked up through an index.
constexpr std::size_t largestTableToScan = 16;

constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

bool isWhole(double number) {
  return std::trunc(number) == number;
}

} // namespace

std::int64_t Decoder::count() const {
  const ValueKind here = kind();
  return here == ValueKind::array || here == ValueKind::table ? source().count(value_) : 0;
}

bool Decoder::readBoolean(bool& into) {
  if (kind() != ValueKind::boolean)
    return failToFind(ValueKind::boolean);
  into = source().boolean(value_);
  return true;
}

/// A number that isn't of the kind integer, or is out of bounds, or no number at all.
bool Decoder::readUnusualInteger(std::int64_t& into, std::int64_t lowest, std::int64_t highest,
                                 std::string_view type) {
  switch (kind()) {
  case ValueKind::floating: {
    const double number = source().floating(value_);
    if (!isWhole(number) || number < -twoTo63 || number >= twoTo63)
      return failToRepresent(type);
    into = static_cast<std::int64_t>(number);
    break;
  }
  case ValueKind::integer:
  case ValueKind::unsignedInteger:
    return failToRepresent(type);
  default:
    return failToFind(ValueKind::integer);
  }
  return (into >= lowest && into <= highest) || failToRepresent(type);
}

bool Decoder::readUnsigned(std::uint64_t& into, std::uint64_t highest, std::string_view type) {
  switch (kind()) {
  case ValueKind::integer: {
    const std::int64_t number = source().integer(value_);
    if (number < 0)
      return failToRepresent(type);
    into = static_cast<std::uint64_t>(number);
    break;
  }
  case ValueKind::unsignedInteger:
    into = source().unsignedInteger(value_);
    break;
  case ValueKind::floating: {
    const double number = source().floating(value_);
    if (!isWhole(number) || number < 0 || number >= twoTo64)
      return failToRepresent(type);
    into = static_cast<std::uint64_t>(number);
    break;
  }
  default:
    return failToFind(ValueKind::integer);
  }
  return into <= highest || failToRepresent(type);
}

bool Decoder::readDouble(double& into) {
  switch (kind()) {
  case ValueKind::floating:
    into = source().floating(value_);
    return true;
  case ValueKind::integer:
    into = static_cast<double>(source().integer(value_));
    return true;
  case ValueKind::unsignedInteger:
    into = static_cast<double>(source().unsignedInteger(value_));
    return true;
  default:
    return failToFind(ValueKind::floating);
  }
}

bool Decoder::readDate(Date& into) {
  if (kind() == ValueKind::date) {
    into = source().date(value_);
    return true;
  }
  if (kind() != ValueKind::text)
    return failToFind(ValueKind::date);
  const std::optional<Date> date = parseISO8601(source().text(value_));
  if (!date)
    return fail(DecodingErrorKind::dataCorrupted,
                "Expected a date in the form of ISO 8601, such as 2024-02-29T12:30:05Z.");
  into = *date;
  return true;
}

bool Decoder::readData(Bytes& into) {
  if (kind() == ValueKind::data) {
    const auto bytes = source().data(value_);
    into.assign(bytes.begin(), bytes.end());
    return true;
  }
  if (kind() != ValueKind::text)
    return failToFind(ValueKind::data);
  std::optional<Bytes> bytes = decodeBase64(source().text(value_));
  if (!bytes)
    return fail(DecodingErrorKind::dataCorrupted, "Expected bytes as a text in base64.");
  into = *std::move(bytes);
  return true;
}

bool Decoder::open(KeyedDecodingContainer& table) {
  return table.open(*this);
}

bool Decoder::open(UnkeyedDecodingContainer& array) {
  return array.open(*this);
}

bool Decoder::fail(DecodingErrorKind kind, std::string description,
                   std::exception_ptr underlyingError) {
  run_->failure.emplace(DecodingFailure{kind, std::move(description)}, codingPath(),
                        std::move(underlyingError));
  return false;
}

bool Decoder::fail(DecodingFailure failure) {
  run_->failure.emplace(std::move(failure), codingPath());
  return false;
}

bool Decoder::failToFind(ValueKind expected) {
  return fail(source().mismatch(value_, expected));
}

bool Decoder::failToRepresent(std::string_view type) {
  return fail(source().notRepresentable(value_, type));
}

bool Decoder::failForMissingKey(std::string_view key) {
  return fail(source().missingKey(key));
}

bool KeyedDecodingContainer::open(const Decoder& table) {
  table_.emplace(table);
  members_.clear();
  places_.clear();
  convertedKeys_.clear();
  const bool keepsKeys = table.keys().keepsKeys();
  const bool opened = table_->forEachMember([&](std::string_view key, Decoder member) {
    if (!keepsKeys)
      key = convertedKeys_.emplace_back(table.keys().convert(key, table.place()));
    members_.push_back({key, member.value()});
    return true;
  });
  if (members_.size() > largestTableToScan)
    for (std::size_t i = 0; i < members_.size(); ++i)
      places_.insert_or_assign(members_[i].key, i);
  return opened;
}

std::vector<std::string_view> KeyedDecodingContainer::allKeys() const {
  std::vector<std::string_view> keys;
  std::unordered_set<std::string_view> seen;
  for (const Member& member : members_)
    if (seen.insert(member.key).second)
      keys.push_back(member.key);
  return keys;
}

bool KeyedDecodingContainer::isNil(std::string_view key) const {
  const Member* member = find(key);
  return member != nullptr && table_->source().kind(member->value) == ValueKind::nil;
}

const KeyedDecodingContainer::Member* KeyedDecodingContainer::find(std::string_view key) const {
  if (!places_.empty()) {
    const auto place = places_.find(key);
    return place == places_.end() ? nullptr : &members_[place->second];
  }
  for (auto member = members_.rbegin(); member != members_.rend(); ++member)
    if (member->key == key)
      return &*member;
  return nullptr;
}

bool KeyedDecodingContainer::failForMissingKey(std::string_view key) {
  return table_->failForMissingKey(key);
}

bool UnkeyedDecodingContainer::open(const Decoder& array) {
  array_.emplace(array);
  index_ = 0;
  count_ = 0;
  if (array.kind() != ValueKind::array)
    return array_->failToFind(ValueKind::array);
  count_ = array.source().count(array.value());
  walk_ = array.source().children(array.value());
  return true;
}

} // namespace velmar
