#include "VelmarCore/JSON/JSONValue.h"

#include "VelmarPlatform/Coding/JSON/JSONCoding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace velmar {
namespace {

using Array = JSONValue::Array;
using Keys = std::vector<std::string>;

JSONValue parsed(std::string_view text) {
  return JSONDecoder().decode<JSONValue>(text);
}

std::string written(const JSONValue& value) {
  return JSONEncoder().encode(value);
}

template <class T>
std::string shown(const std::optional<T>& value) {
  return value ? std::to_string(*value) : "absent";
}

struct IntegerCase {
  double number;
  std::string_view int8;
  std::string_view uint8;
  std::string_view int64;
  std::string_view uint64;
};

TEST(JSONValue, TakesIntegersWithoutTheirFraction) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const IntegerCase rows[] = {
      {1.9, "1", "1", "1", "1"},
      {-0.5, "0", "0", "0", "0"},
      {-1, "-1", "absent", "-1", "absent"},
      {127.9, "127", "127", "127", "127"},
      {128, "absent", "128", "128", "128"},
      {-128.9, "-128", "absent", "-128", "absent"},
      {-129, "absent", "absent", "-129", "absent"},
      {255.5, "absent", "255", "255", "255"},
      {300.7, "absent", "absent", "300", "300"},
      {9223372036854775808.0, "absent", "absent", "absent", "9223372036854775808"},
      {-9223372036854775808.0, "absent", "absent", "-9223372036854775808", "absent"},
      {18446744073709551616.0, "absent", "absent", "absent", "absent"},
      {nan, "absent", "absent", "absent", "absent"},
      {infinity, "absent", "absent", "absent", "absent"},
  };
  for (const IntegerCase& row : rows) {
    const JSONValue value = row.number;
    EXPECT_EQ(shown(value.as<std::int8_t>()), row.int8) << row.number;
    EXPECT_EQ(shown(value.as<std::uint8_t>()), row.uint8) << row.number;
    EXPECT_EQ(shown(value.as<std::int64_t>()), row.int64) << row.number;
    EXPECT_EQ(shown(value.as<std::uint64_t>()), row.uint64) << row.number;
    // Whatever is absent is 0 when it must be something.
    EXPECT_EQ(std::to_string(value.coerceTo<std::int8_t>()), row.int8 == "absent" ? "0" : row.int8);
  }
}

TEST(JSONValue, IsTakenOnlyForWhatItIs) {
  const std::vector<JSONValue> values = {true, 1, "1", Array{1}, JSONObject{{"a", 1}}, nullptr};
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(values[i].as<bool>().has_value(), i == 0);
    EXPECT_EQ(values[i].as<double>().has_value(), i == 1);
    EXPECT_EQ(values[i].as<std::int64_t>().has_value(), i == 1);
    EXPECT_EQ(values[i].as<float>().has_value(), i == 1);
    EXPECT_EQ(values[i].as<std::string>().has_value(), i == 2);
    EXPECT_EQ(values[i].ifArray() != nullptr, i == 3);
    EXPECT_EQ(values[i].ifObject() != nullptr, i == 4);
    EXPECT_EQ(values[i].isNull(), i == 5);
  }
  EXPECT_EQ(JSONValue(0.1).as<float>(), 0.1F);
}

TEST(JSONValue, CanBeMadeAnything) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr double infinity = std::numeric_limits<double>::infinity();
  struct Row {
    JSONValue value;
    bool boolean;
    double number;
    std::int64_t integer;
    std::string_view text;
    bool isTruthy;
  };
  const Row rows[] = {
      {true, true, 1, 1, "true", true},
      {false, false, 0, 0, "false", false},
      {1, true, 1, 1, "1.0", true},
      {0.5, true, 0.5, 0, "0.5", true},
      {-0.0, false, 0, 0, "-0.0", false},
      {1e300, true, 1e300, 0, "1e+300", true},
      {nan, false, nan, 0, "nan", false},
      {-infinity, false, -infinity, 0, "-inf", true},
      {"", false, 0, 0, "", false},
      {"false", true, 0, 0, "false", true},
      {"12", true, 12, 12, "12", true},
      {"+12", true, 12, 12, "+12", true},
      {"-12", true, -12, -12, "-12", true},
      {" 12", true, 0, 0, " 12", true},
      {"12 ", true, 0, 0, "12 ", true},
      {"+-12", true, 0, 0, "+-12", true},
      {"1.5", true, 1.5, 0, "1.5", true},
      {"1e400", true, infinity, 0, "1e400", true},
      {std::string("1\0", 2), true, 0, 0, std::string_view("1\0", 2), true},
      {"9223372036854775808", true, 9223372036854775808.0, 0, "9223372036854775808", true},
      {Array{}, false, 0, 0, "", true},
      {Array{0}, true, 0, 0, "", true},
      {JSONObject{}, true, 0, 0, "", true},
      {nullptr, false, 0, 0, "", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.value.debugDescription());
    EXPECT_EQ(row.value.coerceTo<bool>(), row.boolean);
    EXPECT_EQ(row.value.coerceTo<std::int64_t>(), row.integer);
    EXPECT_EQ(row.value.coerceTo<std::string>(), row.text);
    EXPECT_EQ(row.value.isTruthy(), row.isTruthy);
    EXPECT_EQ(row.value.isFalsy(), !row.isTruthy);
    if (std::isnan(row.number))
      EXPECT_TRUE(std::isnan(row.value.coerceTo<double>()));
    else
      EXPECT_EQ(row.value.coerceTo<double>(), row.number);
  }
  EXPECT_EQ(JSONValue("-1").coerceTo<std::uint8_t>(), 0);
  EXPECT_EQ(JSONValue("256").coerceTo<std::uint8_t>(), 0);
  EXPECT_EQ(JSONValue(true).coerceTo<float>(), 1.0F);
}

TEST(JSONValue, IsFoundByKeysAndPositions) {
  const JSONValue value = parsed(R"({"a":[10,[20,21]],"n":null,"o":{"1":"one"}})");
  struct Row {
    JSONPath path;
    std::string_view found;
  };
  const auto key = JSONPath::Component::key;
  const auto index = JSONPath::Component::index;
  const Row rows[] = {
      {{}, R"({"a":[10,[20,21]],"n":null,"o":{"1":"one"}})"},
      {{key("a"), index(1), index(0)}, "20"},
      {{key("a"), key("1"), key("+1")}, "21"},
      {{key("a"), key("-0")}, "10"},
      {{key("a"), key("-1")}, "absent"},
      {{key("a"), key("2")}, "absent"},
      {{key("a"), key("")}, "absent"},
      {{key("a"), key(" 1")}, "absent"},
      {{key("a"), key("99999999999999999999")}, "absent"},
      {{key("a"), index(2)}, "absent"},
      {{key("n")}, "null"},
      {{key("n"), key("x")}, "absent"},
      {{key("m")}, "absent"},
      {{key("o"), key("1")}, "\"one\""},
      {{key("o"), index(1)}, "absent"},
      {{index(0)}, "absent"},
  };
  for (const auto& [path, expected] : rows) {
    const JSONValue* const found = value.find(path);
    EXPECT_EQ(found == nullptr ? "absent" : written(*found), expected) << path;
  }
  const JSONPath path{key("a"), index(1)};
  EXPECT_EQ(*value.find(std::span(path.components()).first(1)), *value.find("a"));
  EXPECT_EQ(*value.find("a")->find(0), 10);
  EXPECT_EQ(value.find("a")->find(-1), nullptr);
  EXPECT_EQ(value.find(0), nullptr);
}

TEST(JSONValue, IsSetAndFoundAtKeyPaths) {
  struct Row {
    std::string_view before;
    Keys keys;
    std::optional<JSONValue> value;
    std::string_view after;
  };
  const Row rows[] = {
      {"{}", {}, 1, "{}"},
      {"[1]", {"0"}, 1, "[1]"},
      {"null", {"a"}, 1, "null"},
      {"{}", {"a"}, 1, R"({"a":1})"},
      {R"({"a":1,"b":2})", {"a"}, 3, R"({"a":3,"b":2})"},
      {R"({"a":1,"b":2})", {"a"}, std::nullopt, R"({"b":2})"},
      {"{}", {"a", "b", "c"}, 1, R"({"a":{"b":{"c":1}}})"},
      {"{}", {"a", "b", "c"}, std::nullopt, "{}"},
      {R"({"a":{"b":1},"z":0})", {"a", "c"}, nullptr, R"({"a":{"b":1,"c":null},"z":0})"},
      {R"({"a":{"b":1}})", {"a", "b"}, std::nullopt, R"({"a":{}})"},
      {R"({"a":5,"z":0})", {"a", "b"}, 1, R"({"a":{"b":1},"z":0})"},
      {R"({"a":[1]})", {"a", "0", "b"}, 1, R"({"a":{"0":{"b":1}}})"},
      {R"({"a":5})", {"a", "b"}, std::nullopt, "{}"},
      {R"({"a":5})", {"a", "b", "c"}, std::nullopt, R"({"a":5})"},
      {R"({"a":{"b":5}})", {"a", "b", "c"}, std::nullopt, R"({"a":{}})"},
      {R"({"a":null})", {"a", "b"}, std::nullopt, "{}"},
  };
  for (const auto& [before, keys, value, after] : rows) {
    JSONValue changed = parsed(before);
    changed.setAtKeyPath(keys, value);
    EXPECT_EQ(written(changed), after) << before;
    if (value && after != before) {
      const JSONValue* const found = changed.findAtKeyPath(keys);
      ASSERT_NE(found, nullptr) << before;
      EXPECT_EQ(*found, *value);
    }
  }
  const JSONValue value = parsed(R"({"a":[{"b":1}]})");
  EXPECT_EQ(value.findAtKeyPath(Keys{}), nullptr);
  EXPECT_EQ(value.findAtKeyPath(Keys{"a", "0"}), nullptr);
  EXPECT_EQ(value.findAtKeyPath(Keys{"b"}), nullptr);
}

TEST(JSONValue, EndsOnASmallStackHoweverDeepItIs) {
  const Keys keys(200'000, "a");
  JSONValue deep = JSONObject();
  deep.setAtKeyPath(keys, Array{1, "b"});
  ASSERT_NE(deep.findAtKeyPath(keys), nullptr);
  for (int i = 0; i < 200'000; ++i) {
    Array around;
    around.push_back(std::move(deep));
    around.push_back(JSONObject{{"beside", Array{i}}});
    deep = std::move(around);
  }
  deep = nullptr; // which a call for each level wouldn't survive
  EXPECT_TRUE(deep.isNull());
}

TEST(JSONValue, ComparesByShapeAndContent) {
  const auto hash = std::hash<JSONValue>();
  const std::vector<JSONValue> values = {false,
                                         true,
                                         0,
                                         1,
                                         "",
                                         "1",
                                         "a",
                                         Array{},
                                         Array{1},
                                         Array{1, 2},
                                         JSONObject{},
                                         JSONObject{{"a", 1}, {"b", 2}},
                                         nullptr,
                                         JSONObject{{"b", 2}, {"a", 1}},
                                         JSONObject{{"a", nullptr}}};
  for (std::size_t i = 0; i < values.size(); ++i)
    for (std::size_t j = 0; j < values.size(); ++j)
      EXPECT_EQ(values[i] == values[j], i == j) << values[i] << " " << values[j];
  for (const JSONValue& value : values) {
    const JSONValue copy = value;
    EXPECT_EQ(copy, value);
    EXPECT_EQ(hash(copy), hash(value));
  }
  EXPECT_EQ(hash(0.0), hash(-0.0));
  const JSONValue nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_NE(nan, nan);
}

TEST(JSONValue, ReadsTextAndWritesIt) {
  for (const std::string_view text : {"null", "true", "1.5", "-0", "\"a\"", "[]", "{}",
                                      R"({"b":[1,{"z":null,"a":""}],"a":false})"})
    EXPECT_EQ(written(parsed(text)), text);
  EXPECT_EQ(written(parsed(R"({"a":1,"b":2,"a":{"c":3,"c":4}})")), R"({"a":{"c":4},"b":2})");
  EXPECT_EQ(written(parsed("[9007199254740993,18446744073709551615,100000]")),
            "[9007199254740992,18446744073709551616,100000]");
  EXPECT_THROW(static_cast<void>(written(std::numeric_limits<double>::infinity())), EncodingError);
  EXPECT_EQ(parsed(R"({"b":[1,"\n",null],"a":true})").debugDescription(),
            R"({"b": [1.0, "\n", null], "a": true})");
}

TEST(JSONValue, KeepsKeysWhateverStrategyConvertsThoseOfRecords) {
  const DecodingOptions options{.keys = KeyDecodingStrategy::convertFromSnakeCase()};
  const auto value = JSONDecoder(options).decode<JSONValue>(R"({"one_two":{"three_four":5}})");
  EXPECT_EQ(written(value), R"({"one_two":{"three_four":5}})");
}

TEST(JSONValue, ConvertsRawValues) {
  using Variant = RawValue::Variant;
  const auto raw = [](Variant variant) { return RawValue(std::move(variant)); };
  const RawValue document = raw(RawValue::Dictionary{
      {"array", raw(RawValue::Array{raw(true), raw(std::int64_t{-1}), raw(std::uint64_t{7}),
                                    raw(0.5F), raw(2.5), raw(RawValue::Nothing())})},
      {"empty", raw(RawValue::Array{})},
      {"text", raw(std::string("a"))}});
  const JSONValue value = JSONValue::fromRaw(document);
  EXPECT_EQ(written(value), R"({"array":[true,-1,7,0.5,2.5,null],"empty":[],"text":"a"})");
  EXPECT_EQ(value.asRawValue(),
            raw(RawValue::Dictionary{
                {"array", raw(RawValue::Array{raw(true), raw(-1.0), raw(7.0), raw(0.5), raw(2.5),
                                              raw(RawValue::Nothing())})},
                {"empty", raw(RawValue::Array{})},
                {"text", raw(std::string("a"))}}));

  const RawValue date = raw(Date());
  for (const RawValue& bad :
       {date, raw(RawValue::Array{date}), raw(RawValue::Dictionary{{"a", date}})}) {
    try {
      static_cast<void>(JSONValue::fromRaw(bad));
      ADD_FAILURE();
    } catch (const JSONValueRawCoercionError& error) {
      EXPECT_EQ(error.message(), "Could not coerce value to JSON: 1970-01-01T00:00:00Z");
      EXPECT_EQ(error.invalidValue(), date);
    }
  }
  EXPECT_THROW(static_cast<void>(JSONValue::fromRaw(raw(Bytes(3)))), JSONValueRawCoercionError);
}

TEST(JSONObject, KeepsTheOrderOfItsKeys) {
  JSONObject object{{"b", 1}, {"a", 2}, {"b", 3}};
  EXPECT_EQ(written(object), R"({"b":3,"a":2})");
  EXPECT_EQ(object.updateValue(4, "b"), JSONValue(3));
  EXPECT_EQ(object.updateValue(5, "c"), std::nullopt);
  object.set("d", std::nullopt);
  object.set("e", nullptr);
  EXPECT_EQ(written(object), R"({"b":4,"a":2,"c":5,"e":null})");
  EXPECT_EQ(object.removeValueForKey("b"), JSONValue(4));
  EXPECT_EQ(object.removeValueForKey("b"), std::nullopt);
  object.set("b", 6);
  EXPECT_EQ(written(object), R"({"a":2,"c":5,"e":null,"b":6})");
  EXPECT_EQ(object[3].key, "b");
  EXPECT_EQ(object.mapValues([](const JSONValue& value) { return value.isNull(); }).at("e"), true);
  const auto numbers =
      object.compactMapValues([](const JSONValue& value) { return value.as<std::int64_t>(); });
  EXPECT_EQ(numbers.size(), 3U);
  EXPECT_EQ(numbers.at("b"), 6);
  EXPECT_EQ(JSONObject::fromDictionary({{"k", 1}}), (JSONObject{{"k", 1}}));

  const std::int64_t capacity = object.capacity();
  object.removeAll(JSONObject::Storage::kept);
  EXPECT_EQ(object.capacity(), capacity);
  object.removeAll();
  EXPECT_EQ(object.capacity(), 0);
  EXPECT_DEATH(static_cast<void>(object[0]), "A JSON object has no such member.");
}

TEST(JSONObject, BehavesLikeARowOfPairsAtEachSize) {
  std::mt19937 random(7);
  for (const unsigned keyCount : {6U, 20U, 300U}) {
    JSONObject object;
    std::vector<std::pair<std::string, int>> model;
    for (int step = 0; step < 3000; ++step) {
      SCOPED_TRACE(step);
      const std::string key = "key " + std::to_string(random() % keyCount);
      const auto place = std::ranges::find(model, key, &std::pair<std::string, int>::first);
      const unsigned kind = static_cast<unsigned>(random()) % 8;
      if (kind < 5) {
        object.set(key, step);
        if (place != model.end())
          place->second = step;
        else
          model.emplace_back(key, step);
      } else if (kind < 7) {
        EXPECT_EQ(object.removeValueForKey(key).has_value(), place != model.end());
        if (place != model.end())
          model.erase(place);
      } else if (random() % 100 == 0) {
        object.removeAll(JSONObject::Storage::kept);
        model.clear();
      } else if (random() % 10 == 0) {
        const JSONObject copy = object;
        object = JSONObject();
        object = copy;
      }
      ASSERT_EQ(object.count(), static_cast<std::int64_t>(model.size()));
      for (std::size_t i = 0; i < model.size(); ++i) {
        ASSERT_EQ(object[static_cast<std::int64_t>(i)].key, model[i].first);
        ASSERT_EQ(*object.find(model[i].first), model[i].second);
      }
      ASSERT_EQ(object.find("another"), nullptr);
    }
  }
}

} // namespace
} // namespace velmar
