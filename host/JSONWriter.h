// Writes JSON text piece by piece, so that neither the size nor the depth of what is written
// matters. Only what the host needs: no numbers but integers and a few decimals.
#pragma once

#include "host/Streams.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace velmar::host {

/// Calls come in the order of the text; inside an object each value follows its key.
class JSONWriter {
public:
  explicit JSONWriter(Output& output) : output_(output) {}

  void beginObject() { begin('{'); }
  void endObject() { end('}'); }
  void beginArray() { begin('['); }
  void endArray() { end(']'); }
  void key(std::string_view name);

  /// `text` is valid UTF-8.
  void value(std::string_view text);
  void value(std::int64_t number);
  void value(bool truth);

  template <class Value>
  void member(std::string_view name, Value content) {
    key(name);
    value(content);
  }

private:
  void begin(char bracket);
  void end(char bracket);
  void separate();
  void writeString(std::string_view text);

  Output& output_;
  /// For each open bracket whether something stands in it already.
  std::vector<bool> filled_;
  bool afterKey_ = false;
};

} // namespace velmar::host
