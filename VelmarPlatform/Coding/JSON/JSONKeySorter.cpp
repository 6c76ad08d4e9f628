#include "VelmarPlatform/Coding/JSON/JSONKeySorter.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>

namespace velmar::detail {
namespace {

/// Numbers that compare as the first eight bytes of the keys do.
std::uint64_t startOf(std::string_view key) {
  std::uint64_t start = 0;
  std::memcpy(&start, key.data(), std::min(key.size(), sizeof start));
  return std::endian::native == std::endian::little ? __builtin_bswap64(start) : start;
}

} // namespace

void JSONKeySorter::beginTable(std::size_t start) {
  openTables_.push_back(tables_.size());
  tables_.push_back(
      {.start = start, .firstMember = members_.size(), .escapedKeys = escapedKeys_.size()});
}

void JSONKeySorter::beginMember(std::string_view text, std::size_t start, std::string_view key) {
  constexpr std::size_t quotes = 2;
  Member member;
  member.start = start;
  member.keyStart = startOf(key);
  member.key = start + 1;
  member.keyLength = key.size();
  member.firstTable = tables_.size();
  if (text.size() - start != key.size() + quotes) {
    member.isEscaped = true;
    member.key = escapedKeys_.size();
    escapedKeys_ += key;
  }
  Table& table = tables_[openTables_.back()];
  if (members_.size() > table.firstMember && compare(member, members_.back(), text) < 0)
    table.isSorted = false;
  members_.push_back(member);
}

void JSONKeySorter::endMember(std::size_t end) {
  members_.back().end = end;
}

void JSONKeySorter::endTable(char* text, std::size_t size) {
  const std::size_t index = openTables_.back();
  Table& table = tables_[index];
  openTables_.pop_back();
  const bool isInOrder = table.isSorted && tables_.size() == index + 1;
  const std::size_t escapedKeys = table.escapedKeys;
  const std::size_t firstMember = table.firstMember;
  if (isInOrder) {
    tables_.pop_back();
  } else {
    table.end = size;
    table.behind = tables_.size();
    sortMembers(table, {text, size});
  }
  members_.resize(firstMember);
  escapedKeys_.resize(escapedKeys);
  if (isInOrder || !openTables_.empty())
    return;
  const std::string inOrder = putTogether({text, size});
  std::memcpy(text + size - inOrder.size(), inOrder.data(), inOrder.size());
  tables_.clear();
  sortedMembers_.clear();
}

std::string_view JSONKeySorter::keyOf(const Member& member, std::string_view text) const {
  return (member.isEscaped ? std::string_view(escapedKeys_) : text)
      .substr(member.key, member.keyLength);
}

int JSONKeySorter::compare(const Member& left, const Member& right, std::string_view text) const {
  if (left.keyStart != right.keyStart)
    return left.keyStart < right.keyStart ? -1 : 1;
  return keyOf(left, text).compare(keyOf(right, text));
}

void JSONKeySorter::sortMembers(Table& table, std::string_view text) {
  const std::span members = std::span(members_).subspan(table.firstMember);
  table.memberCount = members.size();
  table.head = members.front().start;
  table.tail = members.back().end;
  if (members.size() > 1) {
    table.separatorStart = members[0].end;
    table.separatorEnd = members[1].start;
  }
  if (!table.isSorted)
    std::ranges::sort(members, [&](const Member& left, const Member& right) {
      const int order = compare(left, right, text);
      return order != 0 ? order < 0 : left.start < right.start;
    });
  table.firstMember = sortedMembers_.size();
  sortedMembers_.insert(sortedMembers_.end(), members.begin(), members.end());
}

/// The outermost object anew. Pieces lie in each other as the objects do.
std::string JSONKeySorter::putTogether(std::string_view text) const {
  const auto slice = [text](std::size_t start, std::size_t end) {
    return text.substr(start, end - start);
  };
  std::string result;
  result.reserve(text.size() - tables_.front().start);
  std::vector<Piece> pieces = {{.start = tables_.front().start, .end = tables_.front().end}};
  while (!pieces.empty()) {
    Piece& piece = pieces.back();
    if (piece.nextTable < tables_.size() && tables_[piece.nextTable].start < piece.end) {
      const Table& table = tables_[piece.nextTable];
      result += slice(piece.start, table.head);
      piece.start = table.end;
      piece.nextTable = table.behind;
      pieces.push_back(pieceOf(table, 0));
      continue;
    }
    result += slice(piece.start, piece.end);
    const Piece done = piece;
    pieces.pop_back();
    if (done.table == nullptr)
      break;
    if (done.member + 1 == done.table->memberCount) {
      result += slice(done.table->tail, done.table->end);
      continue;
    }
    result += slice(done.table->separatorStart, done.table->separatorEnd);
    pieces.push_back(pieceOf(*done.table, done.member + 1));
  }
  return result;
}

JSONKeySorter::Piece JSONKeySorter::pieceOf(const Table& table, std::size_t member) const {
  const Member& what = sortedMembers_[table.firstMember + member];
  return {what.start, what.end, what.firstTable, &table, member};
}

} // namespace velmar::detail
