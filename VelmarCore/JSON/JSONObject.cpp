#include "VelmarCore/JSON/JSONValue.h"
#include "VelmarPlatform/Basics/Precondition.h"

#include <algorithm>
#include <bit>

namespace velmar {
namespace {

/// Objects of more members than this are looked up through an index.
constexpr std::size_t largestToScan = 16;
constexpr std::size_t nowhere = std::size_t(-1);

} // namespace

JSONObject::JSONObject() noexcept = default;
JSONObject::JSONObject(JSONObject&& other) noexcept = default;
JSONObject& JSONObject::operator=(JSONObject&& other) noexcept = default;
JSONObject::~JSONObject() = default;

JSONObject::JSONObject(const JSONObject& other)
    : members_(other.members_),
      slots_(other.slots_ != nullptr ? std::make_unique<Slots>(*other.slots_) : nullptr) {}

JSONObject& JSONObject::operator=(const JSONObject& other) {
  return *this = JSONObject(other);
}

JSONObject::JSONObject(std::initializer_list<JSONMember> members) {
  reserveCapacity(static_cast<std::int64_t>(members.size()));
  for (const JSONMember& member : members)
    valueForKey(member.key) = member.value;
}

JSONObject
JSONObject::fromDictionary(const std::unordered_map<std::string, JSONValue>& dictionary) {
  JSONObject object;
  for (const auto& [key, value] : dictionary)
    object.valueForKey(key) = value;
  return object;
}

const JSONValue* JSONObject::find(std::string_view key) const {
  const std::size_t position = positionOf(key);
  return position == nowhere ? nullptr : &members_[position].value;
}

JSONValue* JSONObject::find(std::string_view key) {
  const std::size_t position = positionOf(key);
  return position == nowhere ? nullptr : &members_[position].value;
}

void JSONObject::set(std::string_view key, std::optional<JSONValue> value) {
  if (value)
    valueForKey(key) = *std::move(value);
  else
    removeValueForKey(key);
}

std::optional<JSONValue> JSONObject::updateValue(JSONValue value, std::string_view key) {
  if (JSONValue* present = find(key))
    return std::exchange(*present, std::move(value));
  valueForKey(key) = std::move(value);
  return std::nullopt;
}

JSONValue& JSONObject::valueForKey(std::string_view key) {
  std::size_t position = positionOf(key);
  if (position == nowhere) {
    position = members_.size();
    append(key);
  }
  return members_[position].value;
}

std::optional<JSONValue> JSONObject::removeValueForKey(std::string_view key) {
  const std::size_t position = positionOf(key);
  if (position == nowhere)
    return std::nullopt;
  JSONValue removed = std::move(members_[position].value);
  members_.erase(members_.begin() + static_cast<std::ptrdiff_t>(position));
  if (slots_ != nullptr)
    makeSlots(slots_->size());
  return removed;
}

void JSONObject::removeAll(Storage storage) {
  members_.clear();
  if (storage == Storage::released)
    *this = JSONObject();
  else if (slots_ != nullptr)
    std::ranges::fill(*slots_, 0);
}

void JSONObject::reserveCapacity(std::int64_t capacity) {
  precondition(capacity >= 0, "A capacity is negative.");
  const auto count = static_cast<std::size_t>(capacity);
  members_.reserve(count);
  if (count > largestToScan && (slots_ == nullptr || slots_->size() < 2 * count))
    makeSlots(std::bit_ceil(2 * count));
}

std::int64_t JSONObject::capacity() const noexcept {
  return static_cast<std::int64_t>(members_.capacity());
}

std::int64_t JSONObject::count() const noexcept {
  return static_cast<std::int64_t>(members_.size());
}

std::span<const JSONMember> JSONObject::members() const noexcept {
  return members_;
}

const JSONMember* JSONObject::begin() const noexcept {
  return members_.data();
}

const JSONMember* JSONObject::end() const noexcept {
  return members_.data() + members_.size();
}

const JSONMember& JSONObject::operator[](std::int64_t position) const {
  precondition(position >= 0 && position < count(), "A JSON object has no such member.");
  return members_[static_cast<std::size_t>(position)];
}

bool JSONObject::operator==(const JSONObject& other) const {
  return members_ == other.members_;
}

std::size_t JSONObject::positionOf(std::string_view key) const {
  if (slots_ != nullptr)
    return std::size_t{slotFor(key)} - 1; // a free slot's 0 becomes `nowhere`
  for (std::size_t position = 0; position < members_.size(); ++position)
    if (members_[position].key == key)
      return position;
  return nowhere;
}

/// Where the key's position is, or belongs.
std::uint32_t& JSONObject::slotFor(std::string_view key) const {
  const std::size_t mask = slots_->size() - 1;
  std::size_t slot = std::hash<std::string_view>()(key) & mask;
  while ((*slots_)[slot] != 0 && members_[(*slots_)[slot] - 1].key != key)
    slot = (slot + 1) & mask;
  return (*slots_)[slot];
}

/// Adds a key that isn't there, with null.
void JSONObject::append(std::string_view key) {
  members_.push_back({std::string(key), JSONValue()});
  if (slots_ == nullptr ? members_.size() > largestToScan : slots_->size() < 2 * members_.size())
    makeSlots(std::bit_ceil(4 * members_.size()));
  else if (slots_ != nullptr)
    slotFor(key) = static_cast<std::uint32_t>(members_.size());
}

/// The index anew.
void JSONObject::makeSlots(std::size_t count) {
  slots_ = std::make_unique<Slots>(count);
  for (std::size_t position = 0; position < members_.size(); ++position)
    slotFor(members_[position].key) = static_cast<std::uint32_t>(position + 1);
}

} // namespace velmar

std::size_t std::hash<velmar::JSONObject>::operator()(const velmar::JSONObject& object) const {
  constexpr std::size_t factor = 31;
  auto hash = static_cast<std::size_t>(object.count());
  for (const auto& [key, value] : object)
    hash = (hash * factor + std::hash<std::string>()(key)) * factor +
           std::hash<velmar::JSONValue>()(value);
  return hash;
}
