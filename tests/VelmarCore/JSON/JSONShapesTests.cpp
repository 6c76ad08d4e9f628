#include "VelmarCore/JSON/JSONPath.h"
#include "VelmarCore/JSON/JSONSchema.h"
#include "VelmarCore/JSON/ValueOrBool.h"
#include "VelmarCore/JSON/ValueOrNull.h"
#include "VelmarPlatform/Coding/JSON/JSONCoding.h"
#include "VelmarPlatform/Coding/Record.h"

#include <gtest/gtest.h>

#include <string>

namespace velmar {
namespace {

struct Options {
  std::int64_t size = 0;
  bool operator==(const Options&) const = default;
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Options>(row<&Options::size>("size"));
    return table;
  }
};

/// What `text` reads as and writes as again, or why it can't be read.
template <class T>
std::string through(std::string_view text) {
  try {
    return JSONEncoder().encode(JSONDecoder().decode<T>(text));
  } catch (const DecodingError& error) {
    return error.message();
  }
}

TEST(JSONPath, IsWrittenWithItsStepsAndReadAsKeys) {
  const JSONPath path = JSONPath().appendingKey("settings").appendingIndex(0).appendingKey("name");
  EXPECT_EQ(path.description(), "$.settings.0.name");
  EXPECT_EQ(JSONPath().description(), "$.");
  EXPECT_EQ(JSONEncoder().encode(path), R"(["settings",0,"name"])");
  EXPECT_EQ(through<JSONPath>(R"(["settings","0"])"), R"(["settings","0"])");
  EXPECT_EQ(through<JSONPath>("[0]"), "Expected a text, but found an integer. (at [0])");
  EXPECT_EQ(through<JSONPath>("{}"), "Expected an array, but found an object.");
}

TEST(JSONPath, Grows) {
  JSONPath path{JSONPath::Component::key("a")};
  path.append(path).appendIndex(3);
  EXPECT_EQ(path.debugDescription(), "$.a.a.3");
  EXPECT_EQ(path.appending(JSONPath().appendingKey("b")).count(), 4);
  EXPECT_EQ(path.count(), 3);
  EXPECT_EQ(path[2], JSONPath::Component::index(3));
  EXPECT_NE(JSONPath().appendingKey("0"), JSONPath().appendingIndex(0));
  EXPECT_DEATH(static_cast<void>(path[3]), "A JSON path has no such component.");
  EXPECT_DEATH(path.appendIndex(-1), "A position in a JSON path is negative.");
}

TEST(ValueOrBool, TakesABooleanForABoolean) {
  EXPECT_EQ(through<ValueOrBool<Options>>("false"), "false");
  EXPECT_EQ(through<ValueOrBool<Options>>(R"({"size":3})"), R"({"size":3})");
  EXPECT_EQ(through<ValueOrBool<Options>>(R"({"size":"x"})"),
            "Expected an integer, but found a text. (at size)");
  EXPECT_EQ(through<ValueOrBool<Options>>("1"), "Expected an object, but found an integer.");
  const auto value = JSONDecoder().decode<ValueOrBool<bool>>("true");
  EXPECT_TRUE(value.ifBool() != nullptr && *value.ifBool());
  EXPECT_NE(ValueOrBool<Options>(true), ValueOrBool<Options>(Options{1}));
}

TEST(ValueOrNull, IsNeverLeftOut) {
  EXPECT_EQ(through<ValueOrNull<Options>>("null"), "null");
  EXPECT_EQ(through<ValueOrNull<Options>>(R"({"size":3})"), R"({"size":3})");
  EXPECT_EQ(through<ValueOrNull<Options>>("[]"), "Expected an object, but found an array.");
  EXPECT_EQ(JSONEncoder().encode(ValueOrNull<Options>(nullptr)), "null");
  EXPECT_EQ(std::hash<ValueOrNull<Options>>()(Options{1}),
            std::hash<ValueOrNull<Options>>()(Options{1}));
}

TEST(JSONSchemaValueFormat, IsItsName) {
  using Format = JSONSchema::ValueFormat;
  EXPECT_EQ(JSONEncoder().encode(Format::dateTime), "\"date-time\"");
  EXPECT_EQ(JSONEncoder().encode(Format::filePath), "\"file-path\"");
  EXPECT_EQ(JSONDecoder().decode<Format>("\"idn-hostname\""), Format::idnHostname);
  EXPECT_EQ(through<Format>("\"of my own\""), "\"of my own\"");
}

} // namespace
} // namespace velmar
