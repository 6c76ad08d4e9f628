// Reads values out of a document that is already parsed. This is what a `Coder<T>` is handed;
// records that are declared by rows (see Record.h) never see it.
//
// Nothing in here throws for what a document says. A read that can't be done gives false, and the
// reason is kept with the place where it happened, so a coder is a chain of reads:
//
//   bool Coder<Point>::decode(Decoder from, Point& into) {
//     KeyedDecodingContainer table;
//     return from.open(table) && table.read("x", into.x) && table.read("y", into.y);
//   }
//
// Whoever started the decoding (JSONDecoder and the like) throws the reason as a DecodingError.
#pragma once

#include "VelmarPlatform/Coding/CodingContext.h"
#include "VelmarPlatform/Coding/CodingKey.h"
#include "VelmarPlatform/Coding/DecodingError.h"
#include "VelmarPlatform/Coding/DecodingSource.h"
#include "VelmarPlatform/Coding/KeyStrategy.h"

#include <cstdint>
#include <deque>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace velmar {

class KeyedDecodingContainer;
class UnkeyedDecodingContainer;

/// How a value of type `T` is read and written; see Coder.h.
template <class T>
struct Coder;

struct DecodingOptions {
  KeyDecodingStrategy keys = {};
  CodingContext userInfo = {};
};

/// One run of decoding: what all its decoders share.
struct DecodingRun {
  const DecodingSource& source;
  const DecodingOptions& options;
  /// The first reason that nobody has dropped yet.
  std::optional<DecodingError> failure;
};

/// Stands at one value of a document. A small value itself; it and its copies are good as long as
/// the call that was handed it.
class Decoder {
public:
  Decoder(DecodingRun& run, CodedValue value, const CodingPathNode& place) noexcept
      : run_(&run), value_(value), place_(&place) {}

  [[nodiscard]] ValueKind kind() const { return source().kind(value_); }
  /// Whether a null stands here; never in forms that have none.
  [[nodiscard]] bool isNil() const { return kind() == ValueKind::nil; }
  /// How many elements or members there are; 0 for everything else. O(children) at worst.
  [[nodiscard]] std::int64_t count() const;

  /// Reads a `T` in the way of its coder. On false `into` is in no particular state.
  template <class T>
  [[nodiscard]] bool read(T& into) {
    return Coder<T>::decode(*this, into);
  }
  /// Likewise, for a shape that is only one of several: a reason is dropped.
  template <class T>
  [[nodiscard]] bool tryRead(T& into) {
    if (Coder<T>::decode(*this, into))
      return true;
    run_->failure.reset();
    return false;
  }

  // The scalars. Each is false, with a type mismatch, where another shape stands.

  [[nodiscard]] bool readBoolean(bool& into);
  /// A whole number from `lowest` to `highest`. One with a fraction or out of bounds isn't
  /// representable as `type`, the name to complain with.
  [[nodiscard]] bool readInteger(std::int64_t& into, std::int64_t lowest, std::int64_t highest,
                                 std::string_view type) {
    if (source().readInteger(value_, into) && into >= lowest && into <= highest) [[likely]]
      return true;
    return readUnusualInteger(into, lowest, highest, type);
  }
  /// A whole number up to `highest`.
  [[nodiscard]] bool readUnsigned(std::uint64_t& into, std::uint64_t highest,
                                  std::string_view type);
  /// Any number; one of more digits than a double has is rounded.
  [[nodiscard]] bool readDouble(double& into);
  /// The text as long as the document lives.
  [[nodiscard]] bool readText(std::string_view& into) {
    return source().readText(value_, into) || failToFind(ValueKind::text);
  }
  /// A date of the form's own, or a text in ISO 8601.
  [[nodiscard]] bool readDate(Date& into);
  /// Bytes of the form's own, or a text in base64.
  [[nodiscard]] bool readData(Bytes& into);

  // Tables and arrays. These two borrow the container, which must outlive what is read from it.

  [[nodiscard]] bool open(KeyedDecodingContainer& table);
  [[nodiscard]] bool open(UnkeyedDecodingContainer& array);

  /// Calls `perform(key, decoder)` for each member of the table here, in the document's order, with
  /// keys as they stand there and as often; ends at the first false.
  template <class Function>
  [[nodiscard]] bool forEachMember(Function&& perform) {
    CodedChildren walk;
    if (!source().enterTable(value_, walk))
      return failToFind(ValueKind::table);
    std::string_view key;
    CodedValue member;
    while (walk.next != walk.end && source().nextMember(walk, key, member)) {
      const CodingPathNode place(*place_, key);
      if (!perform(key, Decoder(*run_, member, place)))
        return false;
    }
    return true;
  }
  /// Calls `perform(decoder)` for each element of the array here; ends at the first false.
  template <class Function>
  [[nodiscard]] bool forEachElement(Function&& perform) {
    if (kind() != ValueKind::array)
      return failToFind(ValueKind::array);
    CodedChildren walk = source().children(value_);
    CodedValue element;
    for (std::int64_t index = 0; source().nextElement(walk, element); ++index) {
      const CodingPathNode place(*place_, index);
      if (!perform(Decoder(*run_, element, place)))
        return false;
    }
    return true;
  }

  // Failing. Each gives false, so that a coder can return it.

  bool fail(DecodingErrorKind kind, std::string description,
            std::exception_ptr underlyingError = nullptr);
  bool fail(DecodingFailure failure);
  /// That something else than `expected` stands here, in the words of the form.
  bool failToFind(ValueKind expected);
  bool failToRepresent(std::string_view type);
  bool failForMissingKey(std::string_view key);
  /// Forgets the reason of a read that was only tried.
  void dropFailure() { run_->failure.reset(); }

  [[nodiscard]] const CodingPathNode& place() const noexcept { return *place_; }
  [[nodiscard]] CodingPath codingPath() const { return place_->path(); }
  [[nodiscard]] const KeyDecodingStrategy& keys() const noexcept { return run_->options.keys; }
  /// What the caller of the decoding has set, or null.
  template <class Key>
  [[nodiscard]] const typename Key::Value* userInfo() const {
    return run_->options.userInfo.get<Key>();
  }

  [[nodiscard]] const DecodingSource& source() const noexcept { return run_->source; }
  [[nodiscard]] CodedValue value() const noexcept { return value_; }

private:
  friend class KeyedDecodingContainer;
  friend class UnkeyedDecodingContainer;
  bool readUnusualInteger(std::int64_t& into, std::int64_t lowest, std::int64_t highest,
                          std::string_view type);

  DecodingRun* run_;
  CodedValue value_;
  const CodingPathNode* place_;
};

/// The members of a table by key. Of repeated keys the last counts. Keys are converted when the
/// table is opened.
class KeyedDecodingContainer {
public:
  KeyedDecodingContainer() = default;
  KeyedDecodingContainer(const KeyedDecodingContainer&) = delete;
  KeyedDecodingContainer& operator=(const KeyedDecodingContainer&) = delete;

  /// Each key once, at its first place.
  [[nodiscard]] std::vector<std::string_view> allKeys() const;
  /// Whether the key is there, be its value null.
  [[nodiscard]] bool contains(std::string_view key) const { return find(key) != nullptr; }
  /// Whether the key is there with a null.
  [[nodiscard]] bool isNil(std::string_view key) const;

  /// Reads the value of a key that must be there.
  template <class T>
  [[nodiscard]] bool read(std::string_view key, T& into) {
    return at(key, [&](Decoder member) { return Coder<T>::decode(member, into); });
  }
  /// Absent where the key is missing or null.
  template <class T>
  [[nodiscard]] bool readIfPresent(std::string_view key, std::optional<T>& into) {
    into.reset();
    return !contains(key) || isNil(key) || read(key, into.emplace(T{}));
  }
  /// Calls `perform(decoder)` at the value of a key that must be there, and gives what it gives.
  template <class Function>
  [[nodiscard]] bool at(std::string_view key, Function&& perform) {
    const Member* member = find(key);
    if (member == nullptr)
      return failForMissingKey(key);
    const CodingPathNode place(*table_->place_, member->key);
    return perform(Decoder(*table_->run_, member->value, place));
  }

  /// Fails at the place of the table.
  bool fail(DecodingErrorKind kind, std::string description) {
    return table_->fail(kind, std::move(description));
  }

private:
  friend class Decoder;
  struct Member {
    std::string_view key;
    CodedValue value;
  };
  [[nodiscard]] bool open(const Decoder& table);
  [[nodiscard]] const Member* find(std::string_view key) const;
  bool failForMissingKey(std::string_view key);

  std::optional<Decoder> table_;
  std::vector<Member> members_;
  std::unordered_map<std::string_view, std::size_t> places_; ///< Of large tables only.
  std::deque<std::string> convertedKeys_;
};

/// The elements of an array, one after the other.
class UnkeyedDecodingContainer {
public:
  UnkeyedDecodingContainer() = default;
  UnkeyedDecodingContainer(const UnkeyedDecodingContainer&) = delete;
  UnkeyedDecodingContainer& operator=(const UnkeyedDecodingContainer&) = delete;

  [[nodiscard]] std::int64_t count() const noexcept { return count_; }
  [[nodiscard]] std::int64_t currentIndex() const noexcept { return index_; }
  [[nodiscard]] bool isAtEnd() const noexcept { return index_ == count_; }

  /// Reads the next element, which must be there, and goes on to the one behind it if that worked.
  template <class T>
  [[nodiscard]] bool read(T& into) {
    return next([&](Decoder element) { return Coder<T>::decode(element, into); });
  }
  /// Likewise with `perform(decoder)`.
  template <class Function>
  [[nodiscard]] bool next(Function&& perform) {
    const CodingPathNode place(*array_->place_, index_);
    CodedChildren walk = walk_;
    CodedValue element;
    if (!array_->source().nextElement(walk, element))
      return Decoder(*array_->run_, array_->value_, place).fail(array_->source().atEnd());
    if (!perform(Decoder(*array_->run_, element, place)))
      return false;
    walk_ = walk;
    ++index_;
    return true;
  }

private:
  friend class Decoder;
  [[nodiscard]] bool open(const Decoder& array);

  std::optional<Decoder> array_;
  CodedChildren walk_;
  std::int64_t count_ = 0;
  std::int64_t index_ = 0;
};

/// Reads the whole of a source, from `root` down. Throws DecodingError.
template <class T>
[[nodiscard]] T decodeFrom(const DecodingSource& source, CodedValue root,
                           const DecodingOptions& options) {
  DecodingRun run{source, options, std::nullopt};
  const CodingPathNode place;
  T value{};
  if (!Coder<T>::decode(Decoder(run, root, place), value))
    throw *std::move(run.failure);
  return value;
}

} // namespace velmar
