#include "quorvane/base/JsonText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// A value that is no list of members.
struct OwnCodec {
  int depth = 0;
};

template <>
Json toJson(const OwnCodec& value) {
  Json json = Json::array();
  for (int i = 0; i < value.depth; ++i) json = Json{{"below", json}, {"text", "a\nb"}};
  return json;
}

namespace {

enum class Colour { red, green };
QV_CASE_NAMES(Colour, red, green)

struct Inner {
  std::uint16_t small = 0;
  Colour colour = Colour::red;

  bool operator==(const Inner&) const = default;
};
QV_JSON_FIELDS(Inner, small, colour)

struct Outer {
  std::string text;
  std::int64_t number = 0;
  double fraction = 0;
  bool flag = false;
  Date date;
  Uuid id;
  FilePath path;
  FileUrl url;
  std::vector<Inner> list;
  std::optional<Inner> inner;

  bool operator==(const Outer&) const = default;
};
QV_JSON_FIELDS(Outer, text, number, fraction, flag, date, id, path, url, list, inner)

Outer example() {
  return {.text = "a\"\n",
          .number = INT64_MIN,
          .fraction = 0.25,
          .flag = true,
          .date = dateFromTimestamp(1'000'000'000, 0),
          .id = *uuidFromText("6F9619FF-8B86-4011-B42D-00C04FC964FF"),
          .path = {"/a b"},
          .url = {{"/a b"}},
          .list = {{65535, Colour::green}, {}},
          .inner = Inner{7, Colour::green}};
}

Json exampleJson() { return toJson(example()); }

TEST(JsonTests, keepsEveryKindOfMember) {
  EXPECT_EQ(fromJson<Outer>(exampleJson()), example());
  EXPECT_EQ(recordFromText<Outer>(printedJson(exampleJson())), example());
}

TEST(JsonTests, leavesAnEmptyOptionalOutAndPassesOverMembersItDoesNotKnow) {
  Outer record = example();
  record.inner.reset();
  Json json = toJson(record);
  EXPECT_FALSE(json.contains("inner"));
  json["more"] = Json::array({1, 2});
  EXPECT_EQ(fromJson<Outer>(json), record);
}

TEST(JsonTests, saysWhatIsWrongAndWhere) {
  struct Case {
    std::string patch;  ///< merged into the example (RFC 7396)
    JsonFault fault;
    std::string path;
  };
  const std::vector<Case> cases = {
      {R"({"text": null})", JsonFault::missing, "text"},
      {R"({"text": 1})", JsonFault::mistyped, "text"},
      {R"({"number": "1"})", JsonFault::mistyped, "number"},
      {R"({"number": 1.5})", JsonFault::mistyped, "number"},
      {R"({"number": 1.0})", JsonFault::mistyped, "number"},
      {R"({"number": true})", JsonFault::mistyped, "number"},
      {R"({"number": 9223372036854775808})", JsonFault::outOfRange, "number"},
      {R"({"number": 99999999999999999999})", JsonFault::mistyped, "number"},
      {R"({"fraction": "0.5"})", JsonFault::mistyped, "fraction"},
      {R"({"flag": 0})", JsonFault::mistyped, "flag"},
      {R"({"date": "2026-02-30T00:00:00Z"})", JsonFault::mistyped, "date"},
      {R"({"date": 0})", JsonFault::mistyped, "date"},
      {R"({"id": "6F9619FF"})", JsonFault::mistyped, "id"},
      {R"({"path": "a/b"})", JsonFault::mistyped, "path"},
      {R"({"path": ""})", JsonFault::mistyped, "path"},
      {"{\"path\": \"/a\\u0000b\"}", JsonFault::mistyped, "path"},
      {R"({"url": "/a"})", JsonFault::mistyped, "url"},
      {R"({"list": {}})", JsonFault::mistyped, "list"},
      {R"({"list": [{"small": 1}]})", JsonFault::missing, "list.0.colour"},
      {R"({"list": [{"small": 1, "colour": "red"}, null]})", JsonFault::mistyped, "list.1"},
      {R"({"inner": []})", JsonFault::mistyped, "inner"},
      {R"({"inner": {"small": 65536}})", JsonFault::outOfRange, "inner.small"},
      {R"({"inner": {"small": -1}})", JsonFault::outOfRange, "inner.small"},
      {R"({"inner": {"colour": "blue"}})", JsonFault::unknownCase, "inner.colour"},
      {R"({"inner": {"colour": "Red"}})", JsonFault::unknownCase, "inner.colour"},
      {R"({"inner": {"colour": 0}})", JsonFault::mistyped, "inner.colour"},
  };
  for (const auto& [patch, fault, path] : cases) {
    Json json = exampleJson();
    json.merge_patch(Json::parse(patch));
    const auto read = fromJson<Outer>(json);
    ASSERT_FALSE(read) << patch;
    EXPECT_EQ(read.error(), (JsonError{fault, path}))
        << patch << " " << caseName(read.error().fault) << " " << read.error().path;
  }
}

TEST(JsonTests, refusesNullEvenForAnOptional) {
  for (const char* member : {"inner", "number"}) {
    Json json = exampleJson();
    json[member] = nullptr;
    EXPECT_EQ(fromJson<Outer>(json).error(), (JsonError{JsonFault::mistyped, member}));
  }
}

TEST(JsonTests, refusesWhatIsNotOneValue) {
  for (const std::string text : {"", " ", "{", "[1,]", "{} {}", "{}x", "nul", "\"a", "{\"a\":1,}", "'a'", "NaN",
                                 "/*c*/{}", "\"\xFF\"", "\xEF\xBB"})
    EXPECT_EQ(parsedJson(text).error(), (JsonError{JsonFault::malformed, {}})) << testing::PrintToString(text);
  const std::string tooLong((std::size_t{64} << 20) + 1, ' ');
  EXPECT_EQ(parsedJson(tooLong).error().fault, JsonFault::tooLarge);
}

TEST(JsonTests, survivesDeepNesting) {
  constexpr std::size_t depth = 100'000;
  const std::string open(depth, '['), closed = open + std::string(depth, ']');
  EXPECT_FALSE(recordFromText<Outer>(open));
  EXPECT_FALSE(recordFromText<Outer>(closed));
  EXPECT_FALSE(recordFromText<std::vector<Inner>>(closed));
  Json json = exampleJson();
  const std::string inside = R"({"unknown": )" + closed + "," + printedJson(json).substr(1);
  EXPECT_EQ(recordFromText<Outer>(inside), example());
}

TEST(JsonTests, keepsPathsThatAreNotUtf8) {
  const FilePath path{"/caches/\xFF\xC3/%41"};
  EXPECT_EQ(toJson(path), "file:///caches/%FF%C3/%2541");
  EXPECT_EQ(fromJson<FilePath>(toJson(path)), path);
  const FilePath looksLikeUrl{"/file:///a"};
  EXPECT_EQ(toJson(looksLikeUrl), "/file:///a");
  EXPECT_EQ(fromJson<FilePath>(toJson(looksLikeUrl)), looksLikeUrl);
  EXPECT_TRUE(isValidUtf8(printedJson(toJson(std::string("\xFF")))));
}

/// Names in an order that is not theirs, one of them the start of another.
struct AnyRecord {
  std::optional<std::string> zeta;
  std::vector<std::vector<Inner>> nested;
  std::optional<Outer> outer;
  OwnCodec own;
  std::vector<bool> flags;
  std::vector<double> fractions;
  std::optional<std::vector<std::string>> texts;
  std::vector<FilePath> paths;
  std::uint64_t zeTa = 0;
  std::int8_t zet = 0;
};
QV_JSON_FIELDS(AnyRecord, zeta, nested, outer, own, flags, fractions, texts, paths, zeTa, zet)

struct OnlyOptional {
  std::optional<bool> flag;
};
QV_JSON_FIELDS(OnlyOptional, flag)

std::vector<std::string> hostileTexts() {
  std::vector<std::string> texts = {"", "plain", "\"quoted\"", "back\\slash", "/"};
  for (const char* text : {"\xE2\x80\xA8\xE2\x80\xA9", "\x7F", "\xF0\x9F\x98\x80", "\xFF", "a\xC3", "\xED\xA0\x80",
                           "\xC0\x80", "\xF4\x90\x80\x80"})
    texts.push_back(text);
  for (char control = 0; control < ' '; ++control) texts.push_back(std::string("a") + control + "b");
  return texts;
}

AnyRecord fullRecord() {
  AnyRecord record{.zeta = "z",
                   .nested = {{}, {{1, Colour::green}, {2, Colour::red}}},
                   .outer = example(),
                   .own = {2},
                   .flags = {true, false},
                   .fractions = {0, -0.0, 1, 0.1, 1e300, std::numeric_limits<double>::denorm_min(), std::nan("")},
                   .texts = hostileTexts(),
                   .paths = {},
                   .zeTa = UINT64_MAX,
                   .zet = -128};
  for (const std::string& text : hostileTexts()) record.paths.push_back({"/" + text});
  return record;
}

template <class T>
void expectTheTextOfTheDocument(const T& value) {
  EXPECT_EQ(printedRecord(value), printedJson(toJson(value)));
  std::string twoLevelsIn;
  appendJson(twoLevelsIn, value, 2);
  EXPECT_EQ("[\n  [\n    " + twoLevelsIn + "\n  ]\n]\n", printedJson(Json::array({Json::array({toJson(value)})})));
}

TEST(JsonTextTests, isTheTextOfTheDocument) {
  expectTheTextOfTheDocument(fullRecord());
  expectTheTextOfTheDocument(std::vector{fullRecord(), AnyRecord()});
  expectTheTextOfTheDocument(example());
  expectTheTextOfTheDocument(OnlyOptional{true});
  expectTheTextOfTheDocument(OnlyOptional{});
  expectTheTextOfTheDocument(std::vector<Outer>());
  expectTheTextOfTheDocument(OwnCodec{});
  expectTheTextOfTheDocument(std::vector{INT64_MIN, std::int64_t{0}, INT64_MAX});
}

}  // namespace
}  // namespace quorvane
