#include "VelmarPlatform/Coding/Record.h"

#include "VelmarPlatform/Coding/Base64.h"
#include "VelmarPlatform/Coding/JSON/JSONCoding.h"
#include "VelmarPlatform/Coding/TaggedUnion.h"
#include "VelmarPlatform/Coding/Vocabulary.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmar {
namespace {

using std::chrono::sys_days;

enum class Severity : std::uint8_t { error = 1, warning, info };
std::span<const Severity> numbersOf(Severity /*any*/) {
  static constexpr std::array values{Severity::error, Severity::warning, Severity::info};
  return values;
}

enum class Column : std::uint8_t { string, number };
std::span<const Word<Column>> wordsOf(Column /*any*/) {
  static constexpr std::array words{Word{Column::string, "string"}, Word{Column::number, "number"}};
  return words;
}

struct Markup : OpenVocabulary<Markup, std::string> {
  using OpenVocabulary::OpenVocabulary;
};

struct Point {
  std::int64_t line = 0;
  std::int32_t character = 0;
  bool operator==(const Point&) const = default;
  static std::span<const FieldRow> rows() {
    static constexpr auto table =
        rowsOf<Point>(row<&Point::line>("line"), row<&Point::character>("character"));
    return table;
  }
};

struct Path {
  std::vector<std::string> components;
  bool operator==(const Path&) const = default;
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Path>(wholeRow<&Path::components>());
    return table;
  }
};

struct Everything {
  std::string label;
  std::optional<std::string> detail;
  bool isPinned = true;
  std::optional<std::int64_t> result;
  Severity severity = Severity::error;
  std::optional<Column> column;
  Markup markup;
  std::vector<Point> points;
  std::map<std::string, double> weights;
  std::optional<Path> path;
  std::optional<Date> date;
  Point anchor;
  int cache = 7;
  bool operator==(const Everything&) const = default;
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Everything>(
        row<&Everything::label>("label"), row<&Everything::detail>("detail"),
        row<&Everything::isPinned>("isPinned").orDefault(),
        row<&Everything::result>("result").writtenAsNull(),
        row<&Everything::severity>("severity").orDefault(), row<&Everything::column>("column"),
        row<&Everything::markup>("markup").orDefault(),
        row<&Everything::points>("points").orDefault(),
        row<&Everything::weights>("weights").orDefault(), row<&Everything::path>("path"),
        row<&Everything::date>("date"), flattenedRow<&Everything::anchor>(),
        uncodedRow<&Everything::cache>());
    return table;
  }
};

// What rowsOf goes by when it misses a row: thirteen members, of every kind, and no more.
static_assert(rowDetail::isMadeOf<Everything>(std::make_index_sequence<13>()));
static_assert(!rowDetail::isMadeOf<Everything>(std::make_index_sequence<14>()));

struct Only {
  std::vector<std::string> names;
  bool operator==(const Only&) const = default;
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Only>(wholeRow<&Only::names>());
    return table;
  }
};
struct Nobody {
  bool operator==(const Nobody&) const = default;
  static std::span<const FieldRow> rows() { return {}; }
};
struct Filter {
  std::variant<Nobody, Only> value;
  bool operator==(const Filter&) const = default;
  static std::span<const CaseRow> cases() {
    static constexpr std::array table{caseRow<&Filter::value, Nobody>("nobody"),
                                      caseRow<&Filter::value, Only>("only").underscored()};
    return table;
  }
};

using Either = std::variant<Point, std::int64_t, std::string>;

const std::string smallest = R"({"label":"a","line":1,"character":2})";

TEST(Record, MissingMembersAreAbsentOrKeepTheirInitialiser) {
  const auto read = JSONDecoder().decode<Everything>(smallest);
  Everything expected;
  expected.label = "a";
  expected.anchor = {1, 2};
  EXPECT_EQ(read, expected);
  EXPECT_EQ(JSONEncoder().encode(read),
            R"({"label":"a","isPinned":true,"result":null,"severity":1,"markup":"","points":[],)"
            R"("weights":{},"line":1,"character":2})");
}

TEST(Record, EveryMemberSurvivesARoundTrip) {
  Everything all;
  all.label = "a\"\n\u00e9";
  all.detail = "";
  all.isPinned = false;
  all.result = std::numeric_limits<std::int64_t>::min();
  all.severity = Severity::info;
  all.column = Column::number;
  all.markup = Markup("unheard of");
  all.points = {{1, 2}, {3, -4}};
  all.weights = {{"snake_key", 1.5}, {"", -2}};
  all.path = Path{{"x", "y"}};
  all.date = sys_days(std::chrono::January / 2 / 2024);
  const std::string text = JSONEncoder().encode(all);
  EXPECT_EQ(JSONDecoder().decode<Everything>(text), all) << text;
  const JSONEncoder snake({}, {.keys = KeyEncodingStrategy::convertToSnakeCase});
  const std::string snakeText = snake.encode(all);
  EXPECT_NE(snakeText.find("\"is_pinned\":false"), std::string::npos) << snakeText;
  const JSONDecoder camel({.keys = KeyDecodingStrategy::convertFromSnakeCase()});
  EXPECT_EQ(camel.decode<Everything>(snakeText), all);
}

TEST(Record, ReadsNullUnknownAndRepeatedKeys) {
  const auto read = JSONDecoder().decode<Everything>(
      R"({"detail":"first","what":[1,{"label":3}],"detail":null,"severity":null,"points":[{"line":1,)"
      R"("character":1}],"character":9,"points":[],"label":"b","line":1,"label":"c","isPinned":false})");
  EXPECT_EQ(read.label, "c");
  EXPECT_EQ(read.detail, std::nullopt);
  EXPECT_EQ(read.severity, Severity::error);
  EXPECT_TRUE(read.points.empty());
  EXPECT_FALSE(read.isPinned);
  EXPECT_EQ(read.anchor, (Point{1, 9}));
}

struct Four {
  std::int64_t a = -1;
  std::optional<std::int64_t> b;
  std::vector<std::int64_t> c;
  std::int64_t d = -1;
  bool operator==(const Four&) const = default;
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Four>(row<&Four::a>("a"), row<&Four::b>("b"),
                                               row<&Four::c>("c").orDefault(), row<&Four::d>("d"));
    return table;
  }
};

TEST(Record, OfRepeatedKeysTheLastCountsInWhateverOrderTheyStand) {
  constexpr int longest = 6;
  constexpr std::string_view keys = "abcdx";
  std::vector<std::string> orders = {""};
  for (std::size_t next = 0; next < orders.size(); ++next) {
    const std::string order = orders[next];
    Four expected;
    std::string text;
    for (std::size_t at = 0; at < order.size(); ++at) {
      const auto value = static_cast<std::int64_t>(at);
      switch (order[at]) {
      case 'a':
        expected.a = value;
        break;
      case 'b':
        expected.b = value;
        break;
      case 'c':
        expected.c = {value};
        break;
      case 'd':
        expected.d = value;
        break;
      default:
        break;
      }
      const std::string written = std::to_string(at);
      text += (at == 0 ? "\"" : ",\"") + std::string(1, order[at]) +
              "\":" + (order[at] == 'c' ? "[" + written + "]" : written);
    }
    if (order.size() < longest)
      for (const char key : keys)
        orders.push_back(order + key);
    std::optional<Four> read;
    try {
      read = JSONDecoder().decode<Four>("{" + text + "}");
    } catch (const DecodingError& error) {
      EXPECT_EQ(error.kind(), DecodingErrorKind::keyNotFound);
    }
    ASSERT_EQ(read, expected.a < 0 || expected.d < 0 ? std::nullopt : std::optional(expected))
        << order;
  }
}

struct FailureCase {
  const char* name;
  std::string text;
  DecodingErrorKind kind;
  std::string message;
};
class RecordFailure : public testing::TestWithParam<FailureCase> {};
TEST_P(RecordFailure, TellsKindPlaceAndReason) {
  try {
    static_cast<void>(JSONDecoder().decode<Everything>(GetParam().text));
    FAIL() << "was read";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), GetParam().kind);
    EXPECT_EQ(error.message(), GetParam().message);
  }
}
std::string with(const std::string& member) {
  return R"({"label":"a","line":1,"character":2,)" + member + "}";
}
INSTANTIATE_TEST_SUITE_P(
    Cases, RecordFailure,
    testing::Values(
        FailureCase{"MissingKey", R"({"line":1,"character":2})", DecodingErrorKind::keyNotFound,
                    "The key “label” is missing."},
        FailureCase{"NullForRequired", R"({"label":null})", DecodingErrorKind::valueNotFound,
                    "Expected a text, but found null. (at label)"},
        FailureCase{"NoTable", "[]", DecodingErrorKind::typeMismatch,
                    "Expected an object, but found an array."},
        FailureCase{"NumberForBoolean", with(R"("isPinned":1)"), DecodingErrorKind::typeMismatch,
                    "Expected a boolean, but found an integer. (at isPinned)"},
        FailureCase{"DeepInside", with(R"("points":[{"line":1,"character":2},{"line":1.5}])"),
                    DecodingErrorKind::dataCorrupted,
                    "The number is not representable as Int. (at points[1].line)"},
        FailureCase{"TooLarge", with(R"("points":[{"character":2147483648}])"),
                    DecodingErrorKind::dataCorrupted,
                    "The number is not representable as Int32. (at points[0].character)"},
        FailureCase{"OddKeyInPath", with(R"("weights":{"a b":true})"),
                    DecodingErrorKind::typeMismatch,
                    "Expected a number, but found a boolean. (at weights.\"a b\")"},
        FailureCase{"UnknownWord", with(R"("column":"blob")"), DecodingErrorKind::dataCorrupted,
                    "Expected one of “string”, “number”, but found “blob”. (at column)"},
        FailureCase{"UnknownNumber", with(R"("severity":9)"), DecodingErrorKind::dataCorrupted,
                    "The number 9 stands for nothing known. (at severity)"},
        FailureCase{"NoDate", with(R"("date":"yesterday")"), DecodingErrorKind::dataCorrupted,
                    "Expected a date in the form of ISO 8601, such as 2024-02-29T12:30:05Z. "
                    "(at date)"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Record, EqualRecordsHaveEqualHashes) {
  Everything left = JSONDecoder().decode<Everything>(smallest);
  Everything right = left;
  EXPECT_EQ(std::hash<Everything>()(left), std::hash<Everything>()(right));
  right.anchor.line = 5;
  EXPECT_NE(std::hash<Everything>()(left), std::hash<Everything>()(right));
}

TEST(TaggedUnion, TheOneKeyTellsTheCase) {
  EXPECT_EQ(JSONDecoder().decode<Filter>(R"({"only":{"_0":["a"]}})"), Filter{Only{{"a"}}});
  EXPECT_EQ(JSONDecoder().decode<Filter>(R"({"nobody":{}})"), Filter{});
  EXPECT_EQ(JSONEncoder().encode(Filter{Only{{"a"}}}), R"({"only":{"_0":["a"]}})");
  EXPECT_EQ(JSONEncoder().encode(Filter{}), R"({"nobody":{}})");
  for (const char* bad : {"{}", R"({"only":{"_0":[]},"nobody":{}})", R"({"else":{}})"})
    EXPECT_THROW(static_cast<void>(JSONDecoder().decode<Filter>(bad)), DecodingError) << bad;
}

TEST(Variant, ShapesAreTriedInOrderAndTheLastReasonIsReported) {
  const JSONDecoder decoder;
  EXPECT_EQ(decoder.decode<Either>(R"({"line":1,"character":2})"), Either(Point{1, 2}));
  EXPECT_EQ(decoder.decode<Either>("3"), Either(std::int64_t{3}));
  EXPECT_EQ(decoder.decode<Either>("\"x\""), Either(std::string("x")));
  try {
    static_cast<void>(decoder.decode<std::vector<Either>>("[1,true]"));
    FAIL() << "was read";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.message(), "Expected a text, but found a boolean. (at [1])");
  }
}

TEST(Integers, FitTheirTypeOrAreRefused) {
  const JSONDecoder decoder;
  EXPECT_EQ(decoder.decode<std::uint64_t>("18446744073709551615"), ~std::uint64_t{0});
  EXPECT_EQ(decoder.decode<std::uint8_t>("255.0"), 255);
  EXPECT_EQ(decoder.decode<std::vector<std::int64_t>>("[1,2.0,-3]"),
            (std::vector<std::int64_t>{1, 2, -3}));
  for (const char* bad : {"256", "-1", "0.5", "1e300"})
    EXPECT_THROW(static_cast<void>(decoder.decode<std::uint8_t>(bad)), DecodingError) << bad;
  EXPECT_THROW(static_cast<void>(decoder.decode<std::int64_t>("9223372036854775808")),
               DecodingError);
  EXPECT_THROW(static_cast<void>(decoder.decode<float>("1e39")), DecodingError);
}

TEST(Encoder, ANumberThatIsNotFiniteIsToldWithItsPlace) {
  const std::map<std::string, std::vector<double>> numbers{{"a", {1, std::nan("")}}};
  try {
    static_cast<void>(JSONEncoder().encode(numbers));
    FAIL() << "was written";
  } catch (const EncodingError& error) {
    EXPECT_EQ(describe(error.codingPath()), "a[1]");
  }
}

struct Careless {};
} // namespace

template <>
struct Coder<Careless> {
  static bool decode(Decoder /*from*/, Careless& /*into*/) { return true; }
  static void encode(const Careless& /*value*/, Encoder& into) {
    into.nil();
    into.nil();
  }
};

namespace {

TEST(EncoderDeathTest, TwoValuesForOneStopTheProcess) {
  EXPECT_DEATH(static_cast<void>(JSONEncoder().encode(Careless())), "two values");
}

struct ContextKey {
  using Value = std::string;
};
struct FromContext {
  std::string text;
};
} // namespace

template <>
struct Coder<FromContext> {
  static bool decode(Decoder from, FromContext& into) {
    const std::string* text = from.userInfo<ContextKey>();
    into.text = text == nullptr ? "nothing" : *text;
    return true;
  }
};

namespace {

TEST(CodingContext, ReachesEveryCoder) {
  DecodingOptions options;
  options.userInfo.set<ContextKey>("base");
  const JSONTape tape("[0]");
  EXPECT_EQ(decodeFrom<FromContext>(tape, tape.root(), options).text, "base");
}

TEST(UnkeyedContainer, GoesOnOnlyBehindWhatWasRead) {
  const JSONTape tape("[1,\"a\"]");
  const DecodingOptions options;
  DecodingRun run{tape, options, std::nullopt};
  const CodingPathNode place;
  UnkeyedDecodingContainer array;
  ASSERT_TRUE(Decoder(run, tape.root(), place).open(array));
  EXPECT_EQ(array.count(), 2);
  std::int64_t number = 0;
  std::string text;
  EXPECT_FALSE(array.read(text));
  EXPECT_EQ(array.currentIndex(), 0);
  EXPECT_TRUE(array.read(number) && array.read(text) && array.isAtEnd());
  EXPECT_FALSE(array.read(text));
  EXPECT_EQ(run.failure->kind(), DecodingErrorKind::valueNotFound);
  EXPECT_EQ(describe(run.failure->codingPath()), "[2]");
}

struct KeyCase {
  const char* snake;
  const char* camel;
};
TEST(Keys, ChangeBetweenSnakeAndCamelCase) {
  for (const auto& [snake, camel] : {KeyCase{"_foo_bar__", "_fooBar__"},
                                     {"foo", "foo"},
                                     {"___", "___"},
                                     {"", ""},
                                     {"Foo", "Foo"},
                                     {"base_URL_text", "baseUrlText"},
                                     {"a__b", "aB"}})
    EXPECT_EQ(camelCaseFromSnakeCase(snake), camel);
  for (const auto& [snake, camel] : {KeyCase{"is_pinned", "isPinned"},
                                     {"my_url_property", "myURLProperty"},
                                     {"a", "A"},
                                     {"x1_y", "x1Y"},
                                     {"to_url", "toURL"},
                                     {"_a", "_a"}})
    EXPECT_EQ(snakeCaseFromCamelCase(camel), snake);
}

TEST(Keys, ACustomStrategyGetsThePath) {
  const JSONDecoder decoder({.keys = KeyDecodingStrategy::custom([](const CodingPath& path) {
                               return CodingKey(
                                   describe(path) == "[1].l" ? "line" : path.back().stringValue());
                             })});
  const auto points =
      decoder.decode<std::vector<Point>>(R"([{"line":1,"character":2},{"l":4,"character":5}])");
  EXPECT_EQ(points, (std::vector<Point>{{1, 2}, {4, 5}}));
}

TEST(Base64, TurnsBytesIntoTextAndBack) {
  for (const auto& [plain, coded] :
       {std::pair{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}}) {
    EXPECT_EQ(encodeBase64(bytesOf(plain)), coded);
    EXPECT_EQ(charactersOf(decodeBase64(coded).value()), plain);
  }
  for (const char* bad : {"Zg", "Zg=", "Z===", "Zh==", "Zm 8", "====", "Zg==Zg=="})
    EXPECT_EQ(decodeBase64(bad), std::nullopt) << bad;
}

} // namespace
} // namespace velmar
