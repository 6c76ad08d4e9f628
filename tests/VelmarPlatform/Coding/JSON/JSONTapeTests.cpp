#include "VelmarPlatform/Coding/JSON/JSONTape.h"

#include "VelmarPlatform/Coding/JSON/JSONParser.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <functional>
#include <pthread.h>
#include <span>
#include <string>
#include <vector>

namespace velmar {
namespace {

std::string shown(const JSONTape& tape, CodedValue value) {
  std::string text;
  CodedChildren walk;
  std::string_view key;
  CodedValue child;
  switch (tape.kind(value)) {
  case ValueKind::nil:
    return "null";
  case ValueKind::boolean:
    return tape.boolean(value) ? "true" : "false";
  case ValueKind::integer:
    return std::to_string(tape.integer(value));
  case ValueKind::unsignedInteger:
    return std::to_string(tape.unsignedInteger(value)) + "u";
  case ValueKind::floating: {
    char digits[64];
    return {digits, static_cast<std::size_t>(
                        std::snprintf(digits, sizeof digits, "%.17gd", tape.floating(value)))};
  }
  case ValueKind::text:
    return "<" + std::string(tape.text(value)) + ">";
  case ValueKind::array:
    walk = tape.children(value);
    while (tape.nextElement(walk, child))
      text += (text.empty() ? "" : " ") + shown(tape, child);
    return "[" + text + "]";
  case ValueKind::table:
    walk = tape.children(value);
    while (tape.nextMember(walk, key, child))
      text += (text.empty() ? "" : " ") + std::string(key) + ":" + shown(tape, child);
    return "{" + text + "}";
  default:
    return "?";
  }
}

std::string shown(std::string_view text) {
  const JSONTape tape(text);
  return shown(tape, tape.root());
}

/// Why `text` is refused; empty if it isn't.
std::string refusal(std::string_view text) {
  try {
    return JSONTape(text).byteCount() > 0 ? "" : "nothing";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), DecodingErrorKind::dataCorrupted);
    EXPECT_TRUE(error.codingPath().empty());
    return error.message();
  }
}

struct AcceptedCase {
  std::string_view text;
  std::string_view shown;
};

void expectAccepted(std::span<const AcceptedCase> cases) {
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(shown(text), expected) << text;
    // Between neighbours, with white space of each kind, and as a member.
    const std::string inside = "\r\n\t [ 0 ,\n" + std::string(text) + " ,0]\t";
    EXPECT_EQ(shown(inside), "[0 " + std::string(expected) + " 0]");
    EXPECT_EQ(shown("{\"a\":" + std::string(text) + ",\"b\":1}"),
              "{a:" + std::string(expected) + " b:1}");
  }
}

TEST(JSONTape, ReadsEachShape) {
  const AcceptedCase cases[] = {
      {"null", "null"},
      {"true", "true"},
      {"false", "false"},
      {"[]", "[]"},
      {"{}", "{}"},
      {"[ \n ]", "[]"},
      {"[[],[[]],{}]", "[[] [[]] {}]"},
      {R"({"b":1,"a":{"":[null]},"b":2})", "{b:1 a:{:[null]} b:2}"},
      {R"("")", "<>"},
      {R"("plain")", "<plain>"},
      {"\"a text that is longer than one block of sixteen bytes is\"",
       "<a text that is longer than one block of sixteen bytes is>"},
      {"\"\x7F\"", "<\x7F>"},
  };
  expectAccepted(cases);
}

TEST(JSONTape, ReadsNumbersExactly) {
  const AcceptedCase cases[] = {
      {"0", "0"},
      {"-0", "-0d"},
      {"-0.0", "-0d"},
      {"-0e5", "-0d"},
      {"-1", "-1"},
      {"576460752303423487", "576460752303423487"}, // where one word ends
      {"576460752303423488", "576460752303423488"},
      {"-576460752303423487", "-576460752303423487"},
      {"-576460752303423488", "-576460752303423488"},
      {"999999999999999999", "999999999999999999"},
      {"9223372036854775807", "9223372036854775807"},
      {"-9223372036854775808", "-9223372036854775808"},
      {"9223372036854775808", "9223372036854775808u"},
      {"18446744073709551615", "18446744073709551615u"},
      {"18446744073709551616", "1.8446744073709552e+19d"},
      {"-9223372036854775809", "-9.2233720368547758e+18d"},
      {"1.0", "1d"},
      {"1.5", "1.5d"},
      {"1E2", "100d"},
      {"1e+2", "100d"},
      {"10e-1", "1d"},
      {"0.1", "0.10000000000000001d"},
      {"0.30000000000000004", "0.30000000000000004d"},
      {"3.141592653589793238462643383279", "3.1415926535897931d"},
      {"1e22", "1e+22d"},
      {"1e23", "9.9999999999999992e+22d"},
      {"123456789012345678901234567890", "1.2345678901234568e+29d"},
      {"9007199254740993.0", "9007199254740992d"}, // halfway, to even
      {"9007199254740993.00000000000000000001", "9007199254740994d"},
      {"1.7976931348623157e308", "1.7976931348623157e+308d"},
      {"2.2250738585072014e-308", "2.2250738585072014e-308d"},
      {"5e-324", "4.9406564584124654e-324d"},
      {"2e-324", "0d"},
      {"-1e-400", "-0d"},
      {"1e-99999999999999999999", "0d"},
      {"0e99999999999999999999", "0d"},
      {"0.000000000000000000000000000000000000001e39", "1d"},
      {"1000000000000000000000000000000000000000e-39", "1d"},
  };
  expectAccepted(cases);
  EXPECT_EQ(shown("[0,9,10,99,100,999,1000,7,-8,20,1.5,30,3e2,40,true,50,[60,61],70,8 ,9]"),
            "[0 9 10 99 100 999 1000 7 -8 20 1.5d 30 300d 40 true 50 [60 61] 70 8 9]");
  EXPECT_EQ(JSONTape("[1,2,3,44,-5,6,7,8]").count({}), 8);
}

TEST(JSONTape, ReadsEscapesAndUTF8) {
  const AcceptedCase cases[] = {
      {R"("\"\\\/\b\f\n\r\t")", "<\"\\/\b\f\n\r\t>"},
      {R"("\u0041\u00e9\u20AC\ud83d\ude00")", "<Aé€😀>"},
      {R"("é€😀, and é behind sixteen bytes")", "<é€😀, and é behind sixteen bytes>"},
      {R"("before \u00e9 é and after, at some length, \n")",
       "<before é é and after, at some length, \n>"},
      {R"("\ud83d")", "<\uFFFD>"},
      {R"("\ude00")", "<\uFFFD>"},
      {R"("\ude00\ud83d")", "<\uFFFD\uFFFD>"},
      {R"("\ud83d\ud83d\ude00")", "<\uFFFD😀>"},
      {R"("\ud83dx")", "<\uFFFDx>"},
      {R"("\ud83d\n")", "<\uFFFD\n>"},
      {R"({"\u0061":"\u0062"})", "{a:<b>}"},
      {"\"\xF4\x8F\xBF\xBF\xEF\xBF\xBF\xED\x9F\xBF\"",
       "<\xF4\x8F\xBF\xBF\xEF\xBF\xBF\xED\x9F\xBF>"},
  };
  expectAccepted(cases);
  EXPECT_EQ(shown(R"("\u0000")"), std::string_view("<\0>", 3));
}

TEST(JSONTape, SkipsAByteOrderMarkAtTheStartOnly) {
  EXPECT_EQ(shown("\xEF\xBB\xBF[1]"), "[1]");
  EXPECT_EQ(refusal(" \xEF\xBB\xBF[1]"), "Expected a value at byte 1 (line 1, column 2).");
}

TEST(JSONTape, SaysWhatIsWrongAndWhere) {
  struct Row {
    std::string_view text;
    std::string_view message;
  };
  const Row rows[] = {
      {"", "Expected a value, but the text ends at byte 0 (line 1, column 1)."},
      {" \n", "Expected a value, but the text ends at byte 2 (line 2, column 1)."},
      {"[1,\n 2 3]", "Expected “,” or “]” behind an array's element at byte 7 (line 2, column 4)."},
      {"[\"é\" 3]", "Expected “,” or “]” behind an array's element at byte 6 (line 1, column 6)."},
      {"[1", "Expected “,” or “]” behind an array's element, but the text ends at byte 2 (line 1, "
             "column 3)."},
      {"[1,]", "Expected a value at byte 3 (line 1, column 4)."},
      {"[,1]", "Expected a value at byte 1 (line 1, column 2)."},
      {"[1}", "Expected “,” or “]” behind an array's element at byte 2 (line 1, column 3)."},
      {"{\"a\":1]", "Expected “,” or “}” behind an object's member at byte 6 (line 1, column 7)."},
      {"{\"a\":1,}", "Expected a key in double quotes at byte 7 (line 1, column 8)."},
      {"{a:1}", "Expected a key in double quotes at byte 1 (line 1, column 2)."},
      {"{\"a\" 1}", "Expected “:” behind a key at byte 5 (line 1, column 6)."},
      {"{\"a\":}", "Expected a value at byte 5 (line 1, column 6)."},
      {"1 2", "Expected nothing more behind the value at byte 2 (line 1, column 3)."},
      {"[] // why", "Expected nothing more behind the value at byte 3 (line 1, column 4)."},
      {"tru", "Expected a value; a word may be “true”, “false” or “null” at byte 0 (line 1, "
              "column 1)."},
      {"'a'", "Expected a value at byte 0 (line 1, column 1)."},
      {"NaN", "Expected a value at byte 0 (line 1, column 1)."},
      {"\v1", "Expected a value at byte 0 (line 1, column 1)."},
      {"\xC2\xA0"
       "1",
       "Expected a value at byte 0 (line 1, column 1)."},
      {std::string_view("\0", 1), "Expected a value at byte 0 (line 1, column 1)."},
      {std::string_view("1\0", 2), "Expected nothing more behind the value at byte 1 (line 1, "
                                   "column 2)."},
      {"-", "Expected a digit behind “-”, but the text ends at byte 1 (line 1, column 2)."},
      {"-a", "Expected a digit behind “-” at byte 1 (line 1, column 2)."},
      {"+1", "Expected a value at byte 0 (line 1, column 1)."},
      {".5", "Expected a value at byte 0 (line 1, column 1)."},
      {"01", "Expected no more digits behind a number's leading 0 at byte 1 (line 1, column 2)."},
      {"[1,22,01,3333]",
       "Expected no more digits behind a number's leading 0 at byte 7 (line 1, column 8)."},
      {"[1,22,,3333]", "Expected a value at byte 6 (line 1, column 7)."},
      {"-00.5",
       "Expected no more digits behind a number's leading 0 at byte 2 (line 1, column 3)."},
      {"1.", "Expected a digit behind a number's point, but the text ends at byte 2 (line 1, "
             "column 3)."},
      {"1.e5", "Expected a digit behind a number's point at byte 2 (line 1, column 3)."},
      {"[1e]", "Expected a digit in a number's exponent at byte 3 (line 1, column 4)."},
      {"[1e+]", "Expected a digit in a number's exponent at byte 4 (line 1, column 5)."},
      {"[1e400]", "Expected a number that isn't beyond the range of a double at byte 1 (line 1, "
                  "column 2)."},
      {"1.8e308", "Expected a number that isn't beyond the range of a double at byte 0 (line 1, "
                  "column 1)."},
      {"[\"abc]", "A string lacks its closing quote; it starts at byte 1 (line 1, column 2)."},
      {"\"\\", "Expected one of “\"”, “\\”, “/”, “b”, “f”, “n”, “r”, “t”, “u” behind “\\” in a "
               "string, but the text ends at byte 2 (line 1, column 3)."},
      {"\"\\x\"", "Expected one of “\"”, “\\”, “/”, “b”, “f”, “n”, “r”, “t”, “u” behind “\\” in a "
                  "string at byte 2 (line 1, column 3)."},
      {"\"\\u12g4\"",
       "Expected four hexadecimal digits behind “\\u” at byte 5 (line 1, column 6)."},
      {"\"\\ud83d\\u12\"",
       "Expected four hexadecimal digits behind “\\u” at byte 11 (line 1, column 12)."},
      {"\"a\nb\"", "Expected control characters in a string to be written as escapes at byte 2 "
                   "(line 1, column 3)."},
      {"\"\\n\x1F\"", "Expected control characters in a string to be written as escapes at byte 3 "
                      "(line 1, column 4)."},
  };
  for (const auto& [text, message] : rows)
    EXPECT_EQ(refusal(text), message) << text;
  try {
    const JSONTape tape("[1,\n 2 3]");
    ADD_FAILURE();
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.byteOffset(), 7);
  }
}

TEST(JSONTape, RefusesBadUTF8Anywhere) {
  for (const std::string_view bad :
       {"\x80", "\xC0\xAF", "\xC1\xBF", "\xC3", "\xE0\x9F\xBF", "\xE2\x82", "\xED\xA0\x80",
        "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF0\x9F\x98", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
        "\xFF", "\xE2\x28\xA1", "\xC3\xC3\xA9"})
    for (const std::string_view before : {"", "a", "some sixteen bytes", "é", "\\n"})
      for (const std::string_view behind : {"", "b", "some sixteen bytes or more behind"}) {
        const std::string text =
            "\"" + std::string(before) + std::string(bad) + std::string(behind) + "\"";
        EXPECT_TRUE(refusal(text).starts_with("Expected valid UTF-8 in a string at byte ")) << text;
        EXPECT_EQ(refusal("{" + text + ":1}").substr(0, 20), "Expected valid UTF-8");
      }
}

TEST(JSONTape, RefusesEachPrefixOfADocument) {
  for (
      const std::string_view text :
      {R"([{"name":"a \"b\" \u00e9 é", "list":[1,-2.5e3,true,false,null,"",[],{}]}, 18446744073709551615 ])",
       R"([1,22,333,4444,0,10,{"longer than a block":55},-7,1.5,88,[999,1],2])"}) {
    EXPECT_EQ(refusal(text), "");
    for (std::size_t length = 0; length < text.size(); ++length) {
      // A copy of just that size, so that a sanitizer sees what reads behind it.
      const std::vector<char> prefix(text.begin(),
                                     text.begin() + static_cast<std::ptrdiff_t>(length));
      EXPECT_NE(refusal({prefix.data(), prefix.size()}), "") << length;
    }
  }
}

TEST(JSONTape, SkipsWhatItIsNotAskedFor) {
  const JSONTape tape(R"({"a":[1.5,"\n",[{}]],"b":"\u00e9","c":9223372036854775807,"d":[3]})");
  CodedChildren walk = tape.children(tape.root());
  std::string_view key;
  CodedValue member;
  std::string keys;
  while (tape.nextMember(walk, key, member))
    keys += key;
  EXPECT_EQ(keys, "abcd");
  EXPECT_EQ(tape.count(tape.root()), 4);
  EXPECT_EQ(tape.count(member), 1);
  EXPECT_FALSE(tape.nextMember(walk, key, member));
  EXPECT_EQ(tape.kind(member), ValueKind::array);
}

TEST(JSONTape, ReadsIntegersInBulkAsFarAsTheyAreIntegers) {
  std::vector<std::int64_t> integers = {7};
  const JSONTape whole("[1,-2,9223372036854775807]");
  EXPECT_TRUE(whole.readIntegers(whole.root(), integers));
  EXPECT_EQ(integers, (std::vector<std::int64_t>{7, 1, -2, 9223372036854775807}));
  for (const std::string_view text : {"[1,1.0]", "[1,18446744073709551615]", "[1,\"2\"]"}) {
    const JSONTape mixed(text);
    integers.clear();
    EXPECT_FALSE(mixed.readIntegers(mixed.root(), integers));
    EXPECT_EQ(integers, std::vector<std::int64_t>{1});
  }
}

std::string repeated(std::string_view piece, int count) {
  std::string text;
  for (int i = 0; i < count; ++i)
    text += piece;
  return text;
}

TEST(JSONTape, TakesAtMostFourBytesForEachOfTheText) {
  constexpr int count = 1000;
  for (const std::string_view piece :
       {"0,", "-0,", "[],", "{},", "\"\",", "1.5,", "1e1,", "\"\\n\",", "\"\\u00e9\",", "[0],",
        "[1.5],", "{\"\":0},", "{\"\":[]},", "{\"\\n\":1.5},", "576460752303423488,", "[[[0]]],"}) {
    const std::string text = "[" + repeated(piece, count) + "0]";
    EXPECT_LE(JSONTape(text).byteCount(), 4 * static_cast<std::int64_t>(text.size()) + 4) << piece;
  }
  const std::string deep = repeated("[", 512) + repeated("]", 512);
  EXPECT_LE(JSONTape(deep).byteCount(), 4 * 1024);
}

TEST(JSONTape, ReservesFourBytesForEachOfTheTextAndTwoKilobytes) {
  constexpr std::size_t more = 2048 + 16;
  for (const std::size_t size : std::initializer_list<std::size_t>{0, 1, 511, 512, 513, 1'000'000})
    EXPECT_LE(sizeof(std::uint64_t) * detail::JSONParser::greatestWordCount(size), 4 * size + more);
}

TEST(JSONTape, HasRoomForWhatIsNeverClosed) {
  constexpr int most = 40;
  for (const std::string_view piece :
       {"[", "{\"\":", "[{\"\":[", "[0,", "[1.5,[", "[\"\\n\",{\"\":"})
    for (int count = 1; count < most; ++count)
      for (const std::string_view end : {"", "{}", "0", "\"", "="})
        EXPECT_NE(refusal(repeated(piece, count) + std::string(end)), "");
}

/// Runs `perform` on a thread with a stack of 256 KB.
void onSmallStack(const std::function<void()>& perform) {
  constexpr std::size_t stackSize = 256 * 1024;
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, stackSize), 0);
  pthread_t thread{};
  ASSERT_EQ(pthread_create(
                &thread, &attributes,
                [](void* function) -> void* {
                  (*static_cast<const std::function<void()>*>(function))();
                  return nullptr;
                },
                const_cast<std::function<void()>*>(&perform)),
            0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(JSONTape, RefusesWhatIsNestedTooDeepOnASmallStack) {
  constexpr int limit = 512;
  EXPECT_EQ(refusal(repeated("[", limit) + repeated("]", limit)), "");
  EXPECT_EQ(refusal(repeated("[", limit + 1) + repeated("]", limit + 1)),
            "Arrays and objects may not be nested more than 512 deep at byte 512 (line 1, column "
            "513).");
  onSmallStack([] {
    constexpr int absurd = 1'000'000;
    for (const std::string_view piece : {"[", "{\"a\":", "[{\"\":"})
      EXPECT_TRUE(refusal(repeated(piece, absurd)).starts_with("Arrays and objects may not be"));
  });
}

TEST(JSONTape, ReadsTextsOfMoreThanAQuarterOfAGigabyte) {
  constexpr std::size_t length = (std::size_t{1} << 28) + 5;
  std::string text(length + 2, 'x');
  text.front() = text.back() = '"';
  const JSONTape tape(text);
  EXPECT_EQ(tape.text(tape.root()).size(), length);
  EXPECT_EQ(tape.text(tape.root()).data(), text.data() + 1);
  EXPECT_LE(tape.byteCount(), 16);
}

TEST(JSONTape, RefusesTextsOfFourGigabytes) {
  const char letter = '1';
  // Refused by its size alone: not a byte of it is looked at.
  EXPECT_EQ(refusal(std::string_view(&letter, std::size_t{1} << 32)),
            "A JSON text of 4294967296 bytes is too long; it may have up to 4294967295.");
}

} // namespace
} // namespace velmar
