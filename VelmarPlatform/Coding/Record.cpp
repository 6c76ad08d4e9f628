#include "VelmarPlatform/Coding/Record.h"

#include <bitset>
#include <cstdint>
#include <cstring>

namespace velmar {
namespace {

/// Which rows of a record have been read. Documents mostly have all of them, in order.
class ReadRows {
public:
  /// The row that most likely is next.
  [[nodiscard]] std::size_t next() const { return next_; }
  /// Whether the row has been read before.
  bool add(std::size_t row) {
    if (row == next_ && !isMixed_) [[likely]] {
      ++next_;
      return false;
    }
    for (std::size_t before = 0; before < next_ && !isMixed_; ++before)
      rows_.set(before);
    isMixed_ = true;
    next_ = row + 1;
    const bool isRepeated = rows_[row];
    rows_.set(row);
    return isRepeated;
  }
  [[nodiscard]] bool contains(std::size_t row) const {
    return isMixed_ ? rows_.test(row) : row < next_;
  }
  /// Whether `count` rows are all there; where they came in another order, this may say no.
  [[nodiscard]] bool areSurelyAll(std::size_t count) const { return next_ == count && !isMixed_; }

private:
  std::size_t next_ = 0; // in front of it all have been read, unless they are mixed
  bool isMixed_ = false;
  std::bitset<128> rows_; // if they are
};

bool hasKey(const FieldRow& row) {
  return row.presence <= Presence::writtenAsNull;
}

/// As `==`, by loads that overlap: keys are short, and a call for each costs more than the rest.
inline bool isSame(std::string_view left, std::string_view right) {
  const std::size_t size = left.size();
  if (size != right.size())
    return false;
  const auto areSame = [&]<class Part>(Part /*type*/) {
    const auto partAt = [](std::string_view text, std::size_t at) {
      Part part = 0;
      std::memcpy(&part, text.data() + at, sizeof part);
      return part;
    };
    const std::size_t last = size - sizeof(Part);
    return ((partAt(left, 0) ^ partAt(right, 0)) | (partAt(left, last) ^ partAt(right, last))) == 0;
  };
  if (size > 2 * sizeof(std::uint64_t))
    return left == right;
  if (size >= sizeof(std::uint64_t))
    return areSame(std::uint64_t{});
  if (size >= sizeof(std::uint32_t))
    return areSame(std::uint32_t{});
  if (size >= sizeof(std::uint16_t))
    return areSame(std::uint16_t{});
  return size == 0 || left.front() == right.front();
}

[[gnu::noinline]] std::size_t search(std::span<const FieldRow> rows, std::string_view key,
                                     std::size_t expected) {
  for (std::size_t at = expected; at < rows.size(); ++at)
    if (isSame(rows[at].key, key) && hasKey(rows[at]))
      return at;
  for (std::size_t at = 0; at < expected; ++at)
    if (isSame(rows[at].key, key) && hasKey(rows[at]))
      return at;
  return rows.size();
}

/// The row of `key`, looked for from `expected` on, since documents mostly keep the order of the
/// rows; the number of rows if there is none.
inline std::size_t find(std::span<const FieldRow> rows, std::string_view key,
                        std::size_t expected) {
  if (expected < rows.size() && isSame(rows[expected].key, key) && hasKey(rows[expected]))
    return expected;
  return search(rows, key, expected);
}

/// By itself, so that the usual way needs no string.
[[gnu::noinline]] std::size_t findConverted(std::span<const FieldRow> rows, std::string_view key,
                                            std::size_t expected, const Decoder& table) {
  return search(rows, table.keys().convert(key, table.place()), expected);
}

inline bool decodeMember(const Decoder& from, void* record, const FieldRow& row, bool isRepeated) {
  void* member = row.locate(record);
  if (row.presence == Presence::orDefault && from.isNil())
    return true;
  if (isRepeated)
    row.coding->reset(member);
  return row.coding->decode(from, member);
}

/// What has no key of its own, and what is missing.
bool decodeTheRest(Decoder from, void* record, std::span<const FieldRow> rows,
                   const ReadRows& read) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].presence == Presence::flattened) {
      if (!rows[i].coding->decode(from, rows[i].locate(record)))
        return false;
    } else if (rows[i].presence == Presence::required && !read.contains(i)) {
      return from.failForMissingKey(rows[i].key);
    }
  }
  return true;
}

void encodeMembers(const void* record, std::span<const FieldRow> rows, TableEncoder& table);

[[gnu::always_inline]] inline void encodeMember(const void* record, const FieldRow& row,
                                                TableEncoder& table) {
  // The rows only look: a record that is written stays as it is.
  const void* member = row.locate(const_cast<void*>(record));
  if (!hasKey(row)) [[unlikely]] {
    if (row.presence == Presence::flattened)
      encodeMembers(member, row.coding->rows(), table);
    return;
  }
  if (row.presence != Presence::optional || !row.coding->isAbsent(member))
    table.at(row.key, [&](Encoder& into) { row.coding->encode(member, into); });
}

void encodeMembers(const void* record, std::span<const FieldRow> rows, TableEncoder& table) {
  if (table.wouldSortKeys()) {
    for (const FieldRow& row : rows)
      encodeMember(record, rows[row.inKeyOrder], table);
  } else {
    for (const FieldRow& row : rows)
      encodeMember(record, row, table);
  }
}

bool isWhole(std::span<const FieldRow> rows) {
  return rows.size() == 1 && rows.front().presence == Presence::whole;
}

} // namespace

bool decodeRecord(Decoder from, void* record, std::span<const FieldRow> rows) {
  if (isWhole(rows))
    return rows.front().coding->decode(from, rows.front().locate(record));
  ReadRows read;
  const bool keepsKeys = from.keys().keepsKeys();
  const bool isRead = from.forEachMember([&](std::string_view key, Decoder member) {
    const std::size_t at =
        keepsKeys ? find(rows, key, read.next()) : findConverted(rows, key, read.next(), from);
    if (at == rows.size())
      return true;
    const bool isRepeated = read.add(at);
    return decodeMember(member, record, rows[at], isRepeated);
  });
  return isRead && (read.areSurelyAll(rows.size()) || decodeTheRest(from, record, rows, read));
}

void encodeRecord(const void* record, std::span<const FieldRow> rows, Encoder& into) {
  if (isWhole(rows)) {
    rows.front().coding->encode(rows.front().locate(const_cast<void*>(record)), into);
    return;
  }
  into.table([&](TableEncoder& table) { encodeMembers(record, rows, table); });
}

std::size_t hashRecord(const void* record, std::span<const FieldRow> rows) {
  std::size_t hash = rows.size();
  for (const FieldRow& row : rows)
    if (row.coding->hash != nullptr)
      hash = hash * 31 + row.coding->hash(row.locate(const_cast<void*>(record)));
  return hash;
}

} // namespace velmar
