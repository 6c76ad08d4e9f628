// Puts the members of the objects of a JSON text in the order of their keys; JSONTextWriter's own.
//
// It is told where members start and end while they are written. Where they came in order there is
// nothing to do. Otherwise nothing moves until the outermost object is whole: then all of it is put
// together anew at once, so that a byte is copied twice however deep it lies.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::detail {

/// Places are offsets into the text, which the caller hands in where it is looked at.
class JSONKeySorter {
public:
  void beginTable(std::size_t start);
  /// A member whose key, in its quotes, is at the end of `text` from `start` on. `key` is the key
  /// as it is without escapes.
  void beginMember(std::string_view text, std::size_t start, std::string_view key);
  void endMember(std::size_t end);
  /// Ends the object whose closing bracket is the last of `size` letters at `text`.
  void endTable(char* text, std::size_t size);

private:
  struct Member {
    std::size_t start = 0;
    std::size_t end = 0;
    std::uint64_t keyStart = 0; // its first eight bytes, the first the most significant
    std::size_t key = 0;        // behind its quote; or in escapedKeys_
    std::size_t keyLength = 0;
    bool isEscaped = false;
    std::size_t firstTable = 0; // the first of the tables that start in or behind it
  };
  /// An object, open or to be put together anew.
  struct Table {
    std::size_t start = 0;
    std::size_t end = 0;
    bool isSorted = true;
    std::size_t firstMember = 0; // of members_ while it is open, then of sortedMembers_
    std::size_t memberCount = 0;
    std::size_t escapedKeys = 0; // how much there was of them in front of it
    // The text between its brackets and the first and last member, and between two members.
    std::size_t head = 0;
    std::size_t tail = 0;
    std::size_t separatorStart = 0;
    std::size_t separatorEnd = 0;
    std::size_t behind = 0; // the next of the tables that doesn't lie in this one
  };
  /// A piece of text on its way out: all of it, or a member of an object.
  struct Piece {
    std::size_t start = 0;
    std::size_t end = 0;
    std::size_t nextTable = 0;
    const Table* table = nullptr;
    std::size_t member = 0;
  };

  [[nodiscard]] std::string_view keyOf(const Member& member, std::string_view text) const;
  [[nodiscard]] int compare(const Member& left, const Member& right, std::string_view text) const;
  void sortMembers(Table& table, std::string_view text);
  [[nodiscard]] std::string putTogether(std::string_view text) const;
  [[nodiscard]] Piece pieceOf(const Table& table, std::size_t member) const;

  std::vector<std::size_t> openTables_; // indices of tables_
  std::vector<Table> tables_;           // by where they start
  std::vector<Member> members_;         // of the open ones
  std::vector<Member> sortedMembers_;   // of the others
  std::string escapedKeys_;             // of members_, without their escapes
};

} // namespace velmar::detail
