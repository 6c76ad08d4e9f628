#include "VelmarPlatform/Coding/JSON/JSONTextWriter.h"

#include "VelmarPlatform/Coding/JSON/JSONTape.h"
#include "VelmarPlatform/Coding/Transcoding.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace velmar {
namespace {

std::string rewritten(std::string_view text, JSONTextOptions options = {}) {
  const JSONTape tape(text);
  std::string result;
  JSONTextWriter writer(result, options);
  transcode(tape, tape.root(), writer);
  return result;
}

template <class Number>
std::string written(Number number) {
  std::string text;
  JSONTextWriter(text).floating(number);
  return text;
}

std::string written(const std::string& value) {
  std::string text;
  JSONTextWriter(text).text(value);
  return text;
}

/// `value` as two keys and as a text behind the second.
std::string writtenAsKeys(const std::string& value, JSONTextOptions options = {}) {
  std::string text;
  JSONTextWriter writer(text, options);
  writer.beginTable();
  writer.key(value);
  writer.nil();
  writer.key(value);
  writer.text(value);
  writer.endTable();
  return text;
}

TEST(JSONTextWriter, WritesNumbersAsShortAsTheyCanBe) {
  struct Row {
    double number;
    std::string_view text;
  };
  const Row rows[] = {
      {0, "0"},
      {-0.0, "-0"},
      {1, "1"},
      {-300, "-300"},
      {100000, "100000"},
      {9007199254740992, "9007199254740992"},
      {1e20, "100000000000000000000"},
      {1e21, "1e+21"},
      {1e300, "1e+300"},
      {0.1, "0.1"},
      {1.5, "1.5"},
      {-2.5e-7, "-2.5e-07"},
      {5e-324, "5e-324"},
      {1.7976931348623157e308, "1.7976931348623157e+308"},
  };
  for (const auto& [number, text] : rows) {
    EXPECT_EQ(written(number), text);
  }
  EXPECT_EQ(written(0.1F), "0.1");
  EXPECT_EQ(written(16777216.0F), "16777216");
  EXPECT_EQ(rewritten("[9223372036854775807,-9223372036854775808,18446744073709551615]"),
            "[9223372036854775807,-9223372036854775808,18446744073709551615]");
}

TEST(JSONTextWriter, WritesArraysOfIntegersAtOnceAsOneByOne) {
  const std::vector<std::int64_t> values = {0,
                                            9,
                                            10,
                                            99,
                                            100,
                                            102,
                                            999,
                                            1000,
                                            -1,
                                            -10,
                                            -203,
                                            std::numeric_limits<std::int64_t>::max(),
                                            std::numeric_limits<std::int64_t>::min()};
  const auto writtenTo = [](std::span<const std::int64_t> integers, JSONTextOptions options) {
    std::string text;
    JSONTextWriter(text, options).integers(integers);
    return text;
  };
  EXPECT_EQ(writtenTo(values, {}),
            "[0,9,10,99,100,102,999,1000,-1,-10,-203,9223372036854775807,-9223372036854775808]");
  EXPECT_EQ(writtenTo({}, {}), "[]");
  EXPECT_EQ(writtenTo(std::span(values).first(2), {.pretty = true}), "[\n  0,\n  9\n]");
}

TEST(JSONTextWriter, EscapesOnlyWhatItMust) {
  // At each place of texts of each length up to more than a block.
  for (std::size_t length = 1; length < 40; ++length)
    for (std::size_t place = 0; place < length; ++place) {
      std::string plain(length, '\x7F');
      EXPECT_EQ(written(plain), '"' + plain + '"');
      plain[place] = '\xFF'; // not valid by itself, but no affair of the writer's
      EXPECT_EQ(written(plain), '"' + plain + '"');
      for (const char letter : {'"', '\\', '\n'}) {
        plain[place] = letter;
        const std::string escape = letter == '\n' ? "\\n" : std::string("\\") + letter;
        const std::string quoted = '"' + std::string(place, '\x7F') + escape +
                                   std::string(length - place - 1, '\x7F') + '"';
        EXPECT_EQ(written(plain), quoted);
        const std::string table = "{" + quoted + ":null," + quoted + ":" + quoted + "}";
        EXPECT_EQ(writtenAsKeys(plain), table);
        EXPECT_EQ(writtenAsKeys(plain, {.sortedKeys = true}), table);
      }
    }

  std::string text;
  using namespace std::literals;
  JSONTextWriter(text).text(
      "\"\\/\b\f\n\r\t\0\x1F\x7F é😀\u2028, some sixteen bytes \"and\" more"sv);
  EXPECT_EQ(text, "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0000\\u001f\x7F é😀\u2028, some sixteen bytes "
                  "\\\"and\\\" more\"");
}

TEST(JSONTextWriter, RefusesNumbersThatArentFiniteAndLeavesTheTextAlone) {
  using Limits = std::numeric_limits<double>;
  std::string text = "before";
  for (const double number : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()}) {
    JSONTextWriter writer(text);
    writer.beginArray();
    writer.integer(1);
    EXPECT_THROW(writer.floating(number), EncodingFailure);
    EXPECT_THROW(writer.floating(static_cast<float>(number)), EncodingFailure);
  }
  EXPECT_EQ(text, "before");
  JSONTextWriter(text).nil();
  EXPECT_EQ(text, "beforenull");
}

TEST(JSONTextWriter, LaysOutPrettily) {
  EXPECT_EQ(rewritten(R"({"a":[1,{"b":null}],"c":{},"d":[],"e":[[]]})", {.pretty = true}), R"({
  "a": [
    1,
    {
      "b": null
    }
  ],
  "c": {},
  "d": [],
  "e": [
    []
  ]
})");
  EXPECT_EQ(rewritten("[]", {.pretty = true}), "[]");
  EXPECT_EQ(rewritten("true", {.pretty = true}), "true");
}

TEST(JSONTextWriter, SortsKeysByTheirBytesAtEachLevel) {
  struct Row {
    std::string_view text;
    std::string_view sorted;
  };
  const Row rows[] = {
      {"{}", "{}"},
      {R"({"a":1})", R"({"a":1})"},
      {R"({"b":1,"a":2})", R"({"a":2,"b":1})"},
      {R"({"a":1,"b":{"d":1,"c":2},"e":3})", R"({"a":1,"b":{"c":2,"d":1},"e":3})"},
      {R"({"b":{"d":{"y":1,"x":2},"c":3},"a":[{"g":1,"f":2},4,{}]})",
       R"({"a":[{"f":2,"g":1},4,{}],"b":{"c":3,"d":{"x":2,"y":1}}})"},
      {R"([{"b":1,"a":2},{"b":{"d":1,"c":2},"a":2}])",
       R"([{"a":2,"b":1},{"a":2,"b":{"c":2,"d":1}}])"},
      {R"({"a":1,"ab":2,"A":3,"":4,"é":5,"z":6,"😀":7,"\uffff":8})",
       "{\"\":4,\"A\":3,\"a\":1,\"ab\":2,\"z\":6,\"é\":5,\"\xEF\xBF\xBF\":8,\"😀\":7}"},
      // By what the keys are, not by how they are written.
      {R"({"\\":1,"\"":2,"\n":3,"#":4,"x":{"\t":1,"\b":2}})",
       R"({"\n":3,"\"":2,"#":4,"\\":1,"x":{"\b":2,"\t":1}})"},
      {R"({"b":1,"a":1,"b":2,"a":2})", R"({"a":1,"a":2,"b":1,"b":2})"},
  };
  for (const auto& [text, sorted] : rows) {
    EXPECT_EQ(rewritten(text, {.sortedKeys = true}), sorted);
    EXPECT_EQ(rewritten(text, {.sortedKeys = true, .pretty = true}),
              rewritten(sorted, {.pretty = true}));
  }
}

TEST(JSONTextWriter, SortsKeysBehindAnotherTextToo) {
  std::string text = "[{\"b\":1,\"a\":2}] ";
  const std::string before = text;
  JSONTextWriter writer(text, {.sortedKeys = true});
  const JSONTape tape(R"({"b":{"y":1,"x":2},"a":2})");
  transcode(tape, tape.root(), writer);
  EXPECT_EQ(text, before + R"({"a":2,"b":{"x":2,"y":1}})");
}

/// Tells `writer` a random value.
void tellAnything(std::mt19937& random, EncodingSink& writer, int depth) {
  const auto below = [&random](unsigned count) { return static_cast<unsigned>(random()) % count; };
  const auto word = [&] {
    static constexpr std::string_view pieces[] = {
        "a", "b", "key", "\"", "\\", "\n", "\x01", "é", "😀", "/", "", " ", "sixteen bytes or so"};
    std::string text;
    for (unsigned i = below(4); i > 0; --i)
      text += pieces[below(std::size(pieces))];
    return text;
  };
  const auto bits = [&] { return std::uint64_t{random()} << 32 | random(); };
  switch (below(depth > 0 ? 9 : 7)) {
  case 0:
    return writer.nil();
  case 1:
    return writer.boolean(below(2) == 0);
  case 2:
    return writer.integer(static_cast<std::int64_t>(bits() >> below(64)));
  case 3:
    return writer.integer(-static_cast<std::int64_t>(bits() >> (1 + below(63))));
  case 4:
    return writer.unsignedInteger(bits() | std::uint64_t{1} << 63);
  case 5: {
    double number = 0;
    do
      number = std::bit_cast<double>(bits());
    while (!std::isfinite(number));
    return writer.floating(number);
  }
  case 6:
    return writer.text(word());
  case 7:
    writer.beginArray();
    for (unsigned i = below(5); i > 0; --i)
      tellAnything(random, writer, depth - 1);
    return writer.endArray();
  default:
    writer.beginTable();
    for (unsigned i = below(5); i > 0; --i) {
      writer.key(word());
      tellAnything(random, writer, depth - 1);
    }
    return writer.endTable();
  }
}

TEST(JSONTextWriter, WritesWhatTheTapeReadsBack) {
  constexpr int rounds = 3000;
  for (int seed = 0; seed < rounds; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(static_cast<unsigned>(seed));
    std::string text;
    JSONTextWriter writer(text);
    tellAnything(random, writer, 6);
    EXPECT_EQ(rewritten(text), text);
    EXPECT_EQ(rewritten(rewritten(text, {.pretty = true})), text);
    const std::string sorted = rewritten(text, {.sortedKeys = true});
    EXPECT_EQ(sorted.size(), text.size());
    EXPECT_EQ(rewritten(sorted, {.sortedKeys = true}), sorted);
    EXPECT_EQ(rewritten(rewritten(text, {.sortedKeys = true, .pretty = true})), sorted);
  }
}

TEST(JSONTextWriter, SortsDeepObjectsAboutAsFastAsItWritesThem) {
  // Told at a depth that copying the inside anew at each level would never finish.
  constexpr int depth = 50'000;
  std::string text;
  JSONTextWriter writer(text, {.sortedKeys = true});
  for (int i = 0; i < depth; ++i) {
    writer.beginTable();
    writer.key("b");
    writer.integer(1);
    writer.key("a");
  }
  writer.nil();
  for (int i = 0; i < depth; ++i)
    writer.endTable();
  EXPECT_TRUE(text.starts_with(R"({"a":{"a":{"a":)"));
  EXPECT_TRUE(text.ends_with(R"(,"b":1},"b":1},"b":1})"));
  EXPECT_EQ(text.find(R"({"a":null,"b":1})"), (depth - 1) * std::string_view(R"({"a":)").size());
}

} // namespace
} // namespace velmar
