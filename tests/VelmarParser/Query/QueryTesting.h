// What the tests of queries share: a parsed text, and queries over it by the texts that they give.
#pragma once

#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/Parser.h"
#include "VelmarParser/Query/QueryMatches.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::testing {

/// A text with its tree.
class ParsedText {
public:
  ParsedText(Grammar::BuiltIn language, std::u16string_view source)
      : grammar_(Grammar::fromBuiltIn(language)),
        parser_("test", grammar_, std::make_shared<AtomicFlag>()) {
    text_.replaceSubrange({0, 0}, source);
    ParseInput input(text_);
    tree_ = parser_.parse(nullptr, input.input());
  }
  ParsedText(Grammar::BuiltIn language, std::string_view source)
      : ParsedText(language, std::u16string_view(utf16RepairingUTF8(source))) {}

  [[nodiscard]] const std::shared_ptr<const Grammar>& grammar() const { return grammar_; }
  [[nodiscard]] const DocumentText& text() const { return text_; }
  [[nodiscard]] ParseNode root() const { return tree_->rootNode(); }
  [[nodiscard]] TextRange range() const { return {0, text_.count()}; }
  [[nodiscard]] std::string textOf(ParseNode node) const {
    return utf8RepairingUTF16(text_.substringFor(node.utf16Range()));
  }

  [[nodiscard]] std::shared_ptr<const Query> query(std::string_view queryText) const {
    return std::make_shared<const Query>(queryText, grammar_);
  }
  [[nodiscard]] QueryMatches matches(std::string_view queryText) const {
    return {query(queryText), root(), range(), text_};
  }
  /// For each surviving match the texts of its captures named "x", with commas between them.
  [[nodiscard]] std::vector<std::string> survivors(std::string_view queryText) const {
    std::vector<std::string> result;
    for (const QueryMatches::Element& match : matches(queryText)) {
      std::string texts;
      for (const Query::Match::Capture capture : match.captures()) {
        if (capture.name() == "x")
          texts += (texts.empty() ? "" : ",") + textOf(capture.node());
      }
      result.push_back(std::move(texts));
    }
    return result;
  }

private:
  std::shared_ptr<const Grammar> grammar_;
  Parser parser_;
  DocumentText text_;
  std::optional<ParseTree> tree_;
};

/// The message that compiling the query gives, or "" if it compiles.
inline std::string compileError(std::string_view queryText,
                                Grammar::BuiltIn language = Grammar::BuiltIn::json) {
  try {
    const Query query(queryText, Grammar::fromBuiltIn(language));
    return "";
  } catch (const Error& error) {
    return error.message();
  }
}

} // namespace velmar::testing
