// Tells a sink the values of a record, one after the other. This is what a `Coder<T>` is handed;
// records that are declared by rows (see Record.h) never see it.
//
//   void Coder<Point>::encode(const Point& point, Encoder& into) {
//     into.table([&](TableEncoder& table) {
//       table.write("x", point.x);
//       table.write("y", point.y);
//     });
//   }
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Coding/CodingContext.h"
#include "VelmarPlatform/Coding/CodingKey.h"
#include "VelmarPlatform/Coding/DecodingError.h"
#include "VelmarPlatform/Coding/EncodingSink.h"
#include "VelmarPlatform/Coding/KeyStrategy.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmar {

template <class T>
struct Coder;

struct EncodingOptions {
  KeyEncodingStrategy keys = KeyEncodingStrategy::useDefaultKeys;
  CodingContext userInfo = {};
};

class ArrayEncoder;
class TableEncoder;

/// Stands where one value is to be written, and is told it exactly once: a scalar, a table or an
/// array. Two values, or none, stop the process: that is a fault of a coder. Throws EncodingError
/// where the form can't hold a value.
class Encoder {
public:
  Encoder(EncodingSink& sink, const EncodingOptions& options, const CodingPathNode& place) noexcept
      : sink_(&sink), options_(&options), place_(&place) {}

  void nil() {
    tell([&] { sink_->nil(); });
  }
  void boolean(bool value) {
    tell([&] { sink_->boolean(value); });
  }
  void integer(std::int64_t value) {
    tell([&] { sink_->integer(value); });
  }
  /// An array of them.
  void integers(std::span<const std::int64_t> values) {
    tell([&] { sink_->integers(values); });
  }
  void unsignedInteger(std::uint64_t value) {
    tell([&] { sink_->unsignedInteger(value); });
  }
  void floating(double value) {
    tell([&] { sink_->floating(value); });
  }
  void floating(float value) {
    tell([&] { sink_->floating(value); });
  }
  /// Valid UTF-8.
  void text(std::string_view value) {
    tell([&] { sink_->text(value); });
  }
  void date(Date value) {
    tell([&] { sink_->date(value); });
  }
  void data(std::span<const std::byte> value) {
    tell([&] { sink_->data(value); });
  }

  /// Writes a table of the members that `perform(TableEncoder&)` writes.
  template <class Function>
  void table(Function&& perform);
  /// Writes an array of the elements that `perform(ArrayEncoder&)` writes.
  template <class Function>
  void array(Function&& perform);

  /// Writes `value` in the way of its coder.
  template <class T>
  void write(const T& value) {
    Coder<T>::encode(value, *this);
  }

  template <class Key>
  [[nodiscard]] const typename Key::Value* userInfo() const {
    return options_->userInfo.get<Key>();
  }
  [[nodiscard]] const CodingPathNode& place() const noexcept { return *place_; }
  /// Whether the value has been told.
  [[nodiscard]] bool isDone() const noexcept { return isDone_; }
  /// Throws the failure with the place.
  [[noreturn]] void fail(std::string description) const {
    throw EncodingError(std::move(description), place_->path());
  }

private:
  friend class ArrayEncoder;
  friend class TableEncoder;

  template <class Function>
  void tell(Function&& perform) {
    precondition(!isDone_, "A coder writes two values where one belongs.");
    isDone_ = true;
    try {
      perform();
    } catch (const EncodingFailure& failure) {
      fail(std::string(failure.description));
    }
  }

  EncodingSink* sink_;
  const EncodingOptions* options_;
  const CodingPathNode* place_;
  bool isDone_ = false;
};

/// Writes the members of a table.
class TableEncoder {
public:
  template <class T>
  void write(std::string_view key, const T& value) {
    at(key, [&](Encoder& member) { Coder<T>::encode(value, member); });
  }
  /// Writes nothing for an absent value.
  template <class T>
  void writeIfPresent(std::string_view key, const std::optional<T>& value) {
    if (value)
      write(key, *value);
  }
  /// Writes what `perform(Encoder&)` writes, which must be one value.
  template <class Function>
  void at(std::string_view key, Function&& perform) {
    writeKey(key);
    atKeyAsItStands(key, perform);
  }
  /// Likewise without converting the key: the keys of maps are data.
  template <class Function>
  void atExactly(std::string_view key, Function&& perform) {
    table_->sink_->key(key);
    atKeyAsItStands(key, perform);
  }

  /// Whether members that come in the order of their keys are cheaper.
  [[nodiscard]] bool wouldSortKeys() const noexcept { return table_->sink_->sortsKeys(); }

private:
  friend class Encoder;
  explicit TableEncoder(Encoder& table) noexcept : table_(&table) {}
  void writeKey(std::string_view key) {
    if (table_->options_->keys == KeyEncodingStrategy::useDefaultKeys) [[likely]]
      table_->sink_->key(key);
    else
      writeConvertedKey(key);
  }
  // By itself, so that the usual way needs no string.
  [[gnu::noinline]] void writeConvertedKey(std::string_view key) {
    table_->sink_->key(snakeCaseFromCamelCase(key));
  }
  template <class Function>
  void atKeyAsItStands(std::string_view key, Function&& perform) {
    const CodingPathNode place(*table_->place_, key);
    Encoder member(*table_->sink_, *table_->options_, place);
    perform(member);
    precondition(member.isDone(), "A coder writes a key without a value.");
  }

  Encoder* table_;
};

/// Writes the elements of an array.
class ArrayEncoder {
public:
  template <class T>
  void write(const T& value) {
    next([&](Encoder& element) { Coder<T>::encode(value, element); });
  }
  template <class Function>
  void next(Function&& perform) {
    const CodingPathNode place(*array_->place_, index_++);
    Encoder element(*array_->sink_, *array_->options_, place);
    perform(element);
    precondition(element.isDone(), "A coder writes nothing for an element.");
  }

private:
  friend class Encoder;
  explicit ArrayEncoder(Encoder& array) noexcept : array_(&array) {}

  Encoder* array_;
  std::int64_t index_ = 0;
};

template <class Function>
void Encoder::table(Function&& perform) {
  tell([&] { sink_->beginTable(); });
  TableEncoder table(*this);
  perform(table);
  sink_->endTable();
}

template <class Function>
void Encoder::array(Function&& perform) {
  tell([&] { sink_->beginArray(); });
  ArrayEncoder array(*this);
  perform(array);
  sink_->endArray();
}

/// Writes the whole of `value`. Throws EncodingError.
template <class T>
void encodeInto(EncodingSink& sink, const T& value, const EncodingOptions& options) {
  const CodingPathNode place;
  Encoder encoder(sink, options, place);
  Coder<T>::encode(value, encoder);
  precondition(encoder.isDone(), "A coder writes nothing for a value.");
}

} // namespace velmar
