#include "VelmarParser/Structure/CommentReader.h"

#include "VelmarParser/Query/NodeText.h"
#include "VelmarParser/Structure/CancellableAppend.h"
#include "VelmarParser/Structure/StructureKeys.h"
#include "VelmarPlatform/Unicode/Characters.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>

namespace velmar {

namespace {

using Units = std::u16string_view;

constexpr Units lineBreaks = u"\n\v\f\r\u0085\u2028\u2029";

/// White space is never outside the first plane, so unit by unit will do.
bool isSpace(char16_t unit) {
  return isWhitespaceScalar(unit);
}

Units withoutLeadingSpace(Units text) {
  return {std::ranges::find_if_not(text, isSpace), text.end()};
}

Units withoutTrailingSpace(Units text) {
  while (!text.empty() && isSpace(text.back()))
    text.remove_suffix(1);
  return text;
}

/// `text` without `prefix` and the space behind it.
Units behind(std::size_t prefix, Units text) {
  return withoutLeadingSpace(text.substr(prefix));
}

} // namespace

/// One run of comment, and what is behind the white space at its start.
struct CommentReader::Comment {
  Comment(TextRange runRange, Units runText)
      : range(runRange), text(runText), marked(withoutLeadingSpace(runText)) {}

  /// Where a part of `text` stands in the document.
  [[nodiscard]] std::int64_t offsetOf(Units::const_iterator place) const {
    return range.lowerBound + (place - text.begin());
  }

  TextRange range;
  Units text;
  Units marked;
};

CommentReader::CommentReader(const Parse::Layer& layer, RegularExpressionPass& pass,
                             CancellationTicks& ticks)
    : layer_(layer), text_(layer.parse().text()), pass_(pass), ticks_(ticks) {
  const LanguageSyntax::Comments& comments = layer.configuration().syntax().comments;
  if (comments.single)
    single_ = utf16RepairingUTF8(*comments.single);
  if (comments.multiline) {
    prefix_ = utf16RepairingUTF8(comments.multiline->prefix);
    suffix_ = utf16RepairingUTF8(comments.multiline->suffix);
  }
  std::vector<TextRange> ranges;
  for (const Parse::Layer& sublayer : layer.sublayers()) {
    const auto covered = sublayer.ranges().ranges();
    ranges.insert(ranges.end(), covered.begin(), covered.end());
  }
  sublayerRanges_ = TextRangeSet(ranges);
}

void CommentReader::read() {
  std::u16string scratch;
  const auto runs = layer_.lexicalSpans().runs();
  for (std::size_t index = 0; index < runs.size(); ++index) {
    ticks_.step();
    if (runs.value(index) != LexicalClass::comment)
      continue;
    const TextRange range = runs.range(index);
    const Comment comment(range, textOfRange(range, text_, scratch));
    readFold(comment);
    if (!sublayerRanges_.intersectsContentsOf(range))
      readBookmark(comment);
  }
  closeGroup();
}

void CommentReader::readFold(const Comment& comment) {
  if (single_ && comment.marked.starts_with(*single_)) {
    addToGroup(comment, comment.offsetOf(comment.marked.begin()) + std::ssize(*single_));
  } else if (prefix_ && comment.marked.starts_with(*prefix_) && comment.text.ends_with(suffix_)) {
    addFold(comment.offsetOf(comment.marked.begin()) + std::ssize(*prefix_),
            comment.range.upperBound - std::ssize(suffix_));
  }
}

void CommentReader::addToGroup(const Comment& comment, std::int64_t markEnd) {
  const std::int64_t mark = markEnd - std::ssize(*single_);
  const auto line = text_.lineBoundariesFor(mark, LineAffinity::downstream);
  const auto isNextLine = [&] {
    return text_.lineBoundariesFor(group_->end, LineAffinity::upstream).end == line.start;
  };
  const auto standsAlone = [&] {
    std::u16string scratch;
    return std::ranges::all_of(textOfRange({line.start, mark}, text_, scratch), isSpace);
  };
  if (!group_ || !isNextLine() || !standsAlone()) {
    closeGroup();
    group_ = Group{.start = markEnd, .end = 0};
  }
  group_->end = comment.range.upperBound;
}

/// The first line stays in sight.
void CommentReader::closeGroup() {
  if (!group_)
    return;
  addFold(text_.lineBoundariesFor(group_->start, LineAffinity::downstream).contentsEnd,
          group_->end);
  group_.reset();
}

/// Nothing for ends in the wrong order: `/*/` begins with its mark and ends with its mark.
void CommentReader::addFold(std::int64_t lower, std::int64_t upper) {
  if (lower > upper)
    return;
  auto region = scopingRegionFor(text_, {lower, upper}, {.enforceMultiline = true});
  if (!region)
    return;
  region->attributes.set<StructureAttributes::FoldRole>(CodeFoldingRegion::Role::comment);
  append(*std::move(region), folds_, ticks_);
}

void CommentReader::readBookmark(const Comment& comment) {
  if (const auto content = markedIn(contentOf(comment)))
    addBookmark(comment, *content);
}

/// What a comment says, in its first line or, in a comment of several, in all of them.
Units CommentReader::contentOf(const Comment& comment) const {
  const auto firstLineOf = [](Units text) {
    return text.substr(0, text.find_first_of(lineBreaks));
  };
  if (single_ && comment.marked.starts_with(*single_))
    return firstLineOf(behind(single_->size(), comment.marked));
  if (!prefix_ || !comment.marked.starts_with(*prefix_))
    return firstLineOf(comment.marked);
  const Units content = behind(prefix_->size(), comment.marked);
  return withoutTrailingSpace(content.substr(0, content.find(suffix_)));
}

/// The part of a comment's content that makes a bookmark; absent if it makes none.
std::optional<Units> CommentReader::markedIn(Units content) {
  if (const auto& bookmarks = layer_.configuration().syntax().bookmarks) {
    if (const auto match = bookmarks->regex.firstMatchIn(content, &pass_))
      return bookmarks->contentCapture < 0 ? std::nullopt
                                           : (*match)[bookmarks->contentCapture].substring;
  }
  return content.starts_with(u'!') ? std::optional(behind(1, content)) : std::nullopt;
}

void CommentReader::addBookmark(const Comment& comment, Units content) {
  CodeSymbol bookmark;
  bookmark.kind = CodeSymbolKind::bookmark;
  if (content.starts_with(u'-')) {
    bookmark.traits |= CodeSymbol::Traits::separator;
    const Units title = behind(1, content);
    content = title.empty() ? content.substr(0, 1) : title;
  }
  content = withoutTrailingSpace(withoutLeadingSpace(content));
  const Units name = content.substr(0, content.find_first_of(u"\r\n"));
  const std::int64_t start = comment.offsetOf(content.begin());
  bookmark.range = {start, start + std::ssize(content)};
  bookmark.nameRange = {start, start + std::ssize(name)};
  bookmark.name = utf8RepairingUTF16(name);
  bookmark.languageID = layer_.configuration().id();
  append(std::move(bookmark), bookmarks_, ticks_);
}

} // namespace velmar
