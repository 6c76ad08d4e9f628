// The layers of a document worked out the plain way, over the whole root of every layer at every
// edit.
//
// Given the same trees as the engine, it says what each layer must hold: its ranges, what its
// parser sees, where its language is named, its lexical spans, which sublayers are kept, made and
// dropped, and what an edit changed. It follows the rules one by one. The engine may be clever;
// this may not, and a change that makes the engine faster has no business here.
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "tests/reference/ReferenceQuery.h"

#include <tree_sitter/api.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace velmar::reference {

class Document {
public:
  /// `engine` must be empty and outlive this.
  explicit Document(const Parse& engine);
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  /// To be called after the engine has made the same edit, with what it gave. Throws a
  /// std::runtime_error with the place and both answers where the two differ.
  void edit(TextRange range, const Text& text, const TextRangeSet& changed);

  const Text& text() const { return text_; }
  /// How many layers the last edit looked at.
  std::int64_t layerCount() const { return layerCount_; }

private:
  struct Layer;
  struct Point;
  struct Edit;
  using Ranges = std::vector<Span>; // sorted, apart from each other, not empty

  Ranges reparse(Layer& layer, const Parse::Layer& engine, const Edit& edit);
  Ranges changedBy(const Layer& layer, TSTree* old, const Parse::Layer& engine,
                   const Edit& edit) const;
  Ranges parseInjections(Layer& layer, const Parse::Layer& engine, const Edit& edit);
  std::vector<Point> points(const Layer& layer, TSNode root);
  void compareSpans(const Layer& layer, const Parse::Layer& engine);
  void compareLayer(const Layer& layer, const Parse::Layer& engine) const;
  std::shared_ptr<Query> query(const Layer& layer, ParseQueryCategory category, const char* use);

  const Parse& engine_;
  Text text_;
  std::unique_ptr<Layer> root_;
  std::map<std::string, std::shared_ptr<Query>> queries_; // by language and use
  std::int64_t layerCount_ = 0;
};

} // namespace velmar::reference
