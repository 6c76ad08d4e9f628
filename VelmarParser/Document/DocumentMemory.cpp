#include "VelmarParser/Document/DocumentMemory.h"

#include "VelmarParser/Document/LayerImpl.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Grammar/TreeMemory.h"

namespace velmar {

namespace {

void add(DocumentMemory& memory, const detail::LayerImpl& layer) {
  const auto count = [](std::size_t bytes) { return static_cast<std::int64_t>(bytes); };
  memory.layers += count(sizeof layer + layer.ranges.allocatedBytes() +
                         layer.includedRanges.capacity() * sizeof(TSRange) +
                         layer.languageNameRanges.allocatedBytes() +
                         layer.sublayers.capacity() * sizeof layer.sublayers.front());
  memory.lexicalSpans += count(layer.lexicalSpans.allocatedBytes());
  if (layer.tree)
    memory.trees += bytesOf(*layer.tree);
  if (layer.settled)
    memory.keystrokes += count(layer.settled->allocatedBytes());
  for (const auto& sublayer : layer.sublayers)
    add(memory, *sublayer);
}

} // namespace

DocumentMemory Parse::memory() const {
  const auto [text, lines] = lines_.memory();
  DocumentMemory memory{.text = text, .lines = lines};
  memory.keystrokes = static_cast<std::int64_t>(log_.allocatedBytes());
  add(memory, *root_);
  return memory;
}

} // namespace velmar
