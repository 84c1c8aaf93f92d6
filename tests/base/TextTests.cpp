#include "quorvane/base/Utf8.h"
#include "quorvane/base/Uuid.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quorvane {
namespace {

TEST(Utf8Tests, acceptsExactlyTheShortestFormsOfScalarValues) {
  for (const std::string text : {"", "a", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                                 "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
    EXPECT_TRUE(isValidUtf8(text)) << testing::PrintToString(text);
  for (const std::string text :
       {"\x80", "\xC0\xAF", "\xC1\xBF", "\xC2", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xE2\x82", "\xF0\x8F\xBF\xBF",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xF0\x9F\x98", "\xFF", "a\xFE", "\xE2\x82g"})
    EXPECT_FALSE(isValidUtf8(text)) << testing::PrintToString(text);
}

TEST(Utf8Tests, replacesEachByteThatBelongsToNoCodePoint) {
  EXPECT_EQ(withReplacedInvalidUtf8("a\xFF\xC3\xA4\xE2\x82z"), "a\xEF\xBF\xBD\xC3\xA4\xEF\xBF\xBD\xEF\xBF\xBDz");
  EXPECT_EQ(withReplacedInvalidUtf8("\xF0\x9F\x98\x80"), "\xF0\x9F\x98\x80");
}

TEST(Utf8Tests, lowersAndTrimsAsciiOnly) {
  EXPECT_EQ(asciiLowered("AZ[\xC3\x84"), "az[\xC3\x84");
  EXPECT_EQ(trimmed(" \t\r\n a b \v\f"), "a b");
  EXPECT_EQ(trimmed("\n"), "");
}

TEST(UuidTests, readsBothCasesAndWritesUpperCase) {
  constexpr std::string_view upper = "6F9619FF-8B86-4011-B42D-00C04FC964FF";
  const auto uuid = uuidFromText("6f9619ff-8b86-4011-b42d-00c04fc964ff");
  ASSERT_TRUE(uuid);
  EXPECT_EQ(uuidText(*uuid), upper);
  EXPECT_EQ(uuidFromText(upper), uuid);
}

TEST(UuidTests, refusesOtherTexts) {
  EXPECT_EQ(uuidFromText(""), std::nullopt);
  for (const char* text : {"6F9619FF-8B86-4011-B42D-00C04FC964F", "6F9619FF-8B86-4011-B42D-00C04FC964FFF",
                           "6F9619FF8B86-4011-B42D-00C04FC964FF00", "6F9619FF-8B86-4011-B42D-00C04FC964FG",
                           "6F9619F-F8B86-4011-B42D-00C04FC964FF", "{6F9619FF-8B86-4011-B42D-00C04FC964FF",
                           "6F9619FF-8B86-4011-B42D-00C04FC96 FF", "6F9619FF-8B86-4011-B42D-00C04FC96-FF"})
    EXPECT_EQ(uuidFromText(text), std::nullopt) << text;
}

TEST(UuidTests, ofRandomBytesIsOfVersionFour) {
  std::array<std::uint8_t, 16> random;
  random.fill(0xFF);
  EXPECT_EQ(uuidText(Uuid::fromRandom(random)), "FFFFFFFF-FFFF-4FFF-BFFF-FFFFFFFFFFFF");
  random.fill(0);
  EXPECT_EQ(uuidText(Uuid::fromRandom(random)), "00000000-0000-4000-8000-000000000000");
}

}  // namespace
}  // namespace quorvane
