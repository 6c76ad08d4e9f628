// JSON text into records and values and back, beside libraries that many use. Where a rival isn't
// installed, the table says so.

#include "VelmarCore/JSON/JSONValue.h"
#include "VelmarPlatform/Coding/JSON/JSONCoding.h"
#include "VelmarPlatform/Coding/Record.h"
#include "bench/Pair.h"
#include "bench/VelmarCore/JSON/Documents.h"
#include "bench/rivals/JSONRivals.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace velmar::bench {
namespace {

template <class Record>
const Record& record();
template <>
const CompletionList& record() {
  static const CompletionList list = completionList();
  return list;
}
template <>
const SemanticTokens& record() {
  static const SemanticTokens tokens = semanticTokens();
  return tokens;
}
template <>
const WorkspaceEdit& record() {
  static const WorkspaceEdit edit = workspaceEdit();
  return edit;
}

template <class Record>
const std::string& textOf() {
  static const std::string text = JSONEncoder().encode(record<Record>());
  return text;
}

/// The least that any parser does: each byte is looked at.
template <class Record>
void readBytes(State& state) {
  const std::string& text = textOf<Record>();
  for (auto _ : state)
    benchmark::DoNotOptimize(std::ranges::count(text, '"'));
}

template <class Record>
void parse(State& state) {
  const std::string& text = textOf<Record>();
  for (auto _ : state)
    benchmark::DoNotOptimize(JSONTape(text).byteCount());
}

template <class Record>
void decode(State& state) {
  const std::string& text = textOf<Record>();
  for (auto _ : state) {
    const auto decoded = JSONDecoder().decode<Record>(text);
    benchmark::DoNotOptimize(&decoded);
  }
}

template <class Record>
void encode(State& state) {
  const Record& value = record<Record>();
  for (auto _ : state)
    benchmark::DoNotOptimize(JSONEncoder().encode(value).size());
}

template <class Record>
void encodeSorted(State& state) {
  const Record& value = record<Record>();
  for (auto _ : state)
    benchmark::DoNotOptimize(JSONEncoder({.sortedKeys = true}).encode(value).size());
}

template <class Record>
void decodeUntyped(State& state) {
  const std::string& text = textOf<Record>();
  for (auto _ : state) {
    const auto decoded = JSONDecoder().decode<JSONValue>(text);
    benchmark::DoNotOptimize(&decoded);
  }
}

#ifdef VELMAR_RIVAL_RAPIDJSON
template <class Record>
void parseRapidJSON(State& state) {
  const std::string& text = textOf<Record>();
  for (auto _ : state)
    benchmark::DoNotOptimize(parseWithRapidJSON(text));
}
template <class Record>
void decodeRapidJSON(State& state) {
  const std::string& text = textOf<Record>();
  for (auto _ : state) {
    const Record decoded = RapidJSON<Record>::decode(text);
    benchmark::DoNotOptimize(&decoded);
  }
}
template <class Record>
void encodeRapidJSON(State& state) {
  const Record& value = record<Record>();
  for (auto _ : state)
    benchmark::DoNotOptimize(RapidJSON<Record>::encode(value).size());
}
#endif

#ifdef VELMAR_RIVAL_NLOHMANN
template <class Record>
void decodeNlohmann(State& state) {
  const std::string& text = textOf<Record>();
  for (auto _ : state) {
    const Record decoded = Nlohmann<Record>::decode(text);
    benchmark::DoNotOptimize(&decoded);
  }
}
template <class Record>
void decodeUntypedNlohmann(State& state) {
  const std::string& text = textOf<Record>();
  for (auto _ : state)
    benchmark::DoNotOptimize(parseWithNlohmann(text));
}
#endif

template <class Record>
bool registerPairs(const std::string& document) {
  registerPair({"json/tape/" + document + "/bytes", 0, readBytes<Record>, parse<Record>});
  registerPair(
      {"json/sorted/" + document + "/unsorted", 2.5, encode<Record>, encodeSorted<Record>});
#ifdef VELMAR_RIVAL_RAPIDJSON
  registerPair(
      {"json/tape/" + document + "/rapidjson", 0.5, parseRapidJSON<Record>, parse<Record>});
  registerPair(
      {"json/decode/" + document + "/rapidjson", 0.7, decodeRapidJSON<Record>, decode<Record>});
  registerPair(
      {"json/encode/" + document + "/rapidjson", 1.0, encodeRapidJSON<Record>, encode<Record>});
#else
  leaveOut("json/…/" + document + "/rapidjson", "rapidjson-dev or a g++ is missing");
#endif
#ifdef VELMAR_RIVAL_NLOHMANN
  registerPair(
      {"json/decode/" + document + "/nlohmann", 0.2, decodeNlohmann<Record>, decode<Record>});
  registerPair({"json/untyped/" + document + "/nlohmann", 0.3, decodeUntypedNlohmann<Record>,
                decodeUntyped<Record>});
#else
  leaveOut("json/…/" + document + "/nlohmann", "nlohmann-json3-dev or a g++ is missing");
#endif
  return true;
}

[[maybe_unused]] const bool completion = registerPairs<CompletionList>("completion");
[[maybe_unused]] const bool tokens = registerPairs<SemanticTokens>("tokens");
[[maybe_unused]] const bool edit = registerPairs<WorkspaceEdit>("edit");

} // namespace
} // namespace velmar::bench
