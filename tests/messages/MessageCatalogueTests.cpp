#include "quorvane/app/messages/MessageCatalogue.h"

#include "quorvane/app/messages/ByteFormat.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quorvane {
namespace {

MessageCatalogue catalogueOf(std::string_view json) {
  auto catalogue = MessageCatalogue::parsed(json);
  EXPECT_TRUE(catalogue.has_value()) << json;
  return catalogue ? *std::move(catalogue) : MessageCatalogue();
}

TEST(MessageCatalogueTests, putsValuesInTheirPlaces) {
  ::setenv("TZ", "Europe/Berlin", 1);
  ::tzset();
  const auto catalogue = catalogueOf(R"({"a.b": "[{{x}}]", "plain": "word", "twice": "{{x}}{{x}} {{y}}",
    "files_one": "{{count}} file", "files_other": "{{count}} files"})");
  const auto shown = [&](MessageValue value) {
    return catalogue.text({"a.b", {{"x", std::move(value)}}}, {.home = FilePath{"/home/ada"}});
  };
  EXPECT_EQ(shown(std::string("a\nb")), "[a\\nb]");
  EXPECT_EQ(shown(std::string("{{y}}")), "[{{y}}]") << "a value is not read for placeholders again";
  EXPECT_EQ(shown(std::int64_t{-1234567}), "[-1,234,567]");
  EXPECT_EQ(shown(std::int64_t{123}), "[123]");
  EXPECT_EQ(shown(FilePath{"/home/ada/x\x1b[2J"}), "[~/x\\x1b[2J]");
  EXPECT_EQ(shown(FilePath{"/home/ada"}), "[~]");
  EXPECT_EQ(shown(FilePath{"/home/adam"}), "[/home/adam]");
  EXPECT_EQ(shown(MessageKey{"plain"}), "[word]");
  EXPECT_EQ(shown(dateFromTimestamp(1'795'237'443, 0)), "[2026-11-21 06:04]");
  EXPECT_EQ(catalogue.text({"twice", {{"x", std::string("1")}}}), "11 {{y}}");
  EXPECT_EQ(catalogue.text({"files", {{"count", std::int64_t{1}}}}), "1 file");
  EXPECT_EQ(catalogue.text({"files", {{"count", std::int64_t{0}}}}), "0 files");
  EXPECT_EQ(catalogue.text({"files", {{"count", std::int64_t{12000}}}}), "12,000 files");
  EXPECT_EQ(catalogue.text("not.there"), "not.there");
}

TEST(MessageCatalogueTests, refusesWhatCouldShowWrongTexts) {
  const struct {
    const char* json;
    CatalogueFault fault;
    const char* key;
  } cases[] = {
      {R"()", CatalogueFault::malformed, ""},
      {R"(["a"])", CatalogueFault::malformed, ""},
      {R"({"a": "b"} x)", CatalogueFault::malformed, ""},
      {R"({"a": "bell \u0007"})", CatalogueFault::malformed, "a"},
      {R"({"a": {"b": "c"}})", CatalogueFault::notText, "a"},
      {R"({"a": 1})", CatalogueFault::notText, "a"},
      {R"({"a": "1", "a": "2"})", CatalogueFault::duplicateKey, "a"},
      {R"({"": "1"})", CatalogueFault::badKey, ""},
      {R"({"a b": "1"})", CatalogueFault::badKey, "a b"},
      {R"({"a": "{{x"})", CatalogueFault::brokenPlaceholder, "a"},
      {R"({"a": "x}}"})", CatalogueFault::brokenPlaceholder, "a"},
      {R"({"a": "{{}}"})", CatalogueFault::brokenPlaceholder, "a"},
      {R"({"a": "{{x y}}"})", CatalogueFault::brokenPlaceholder, "a"},
      {R"({"a_one": "x"})", CatalogueFault::incompletePlural, "a_one"},
      {R"({"a_other": "x", "a": "y"})", CatalogueFault::incompletePlural, "a_other"},
  };
  for (const auto& [json, fault, key] : cases) {
    const auto outcome = MessageCatalogue::parsed(json);
    ASSERT_FALSE(outcome.has_value()) << json;
    EXPECT_EQ(outcome.error(), (CatalogueError{fault, key})) << json << caseName(outcome.error().fault);
  }
  EXPECT_TRUE(MessageCatalogue::parsed(R"({"a": "{x} {{y}} {"})").has_value());
}

TEST(ByteFormatTests, roundsToWhatPeopleRead) {
  const auto catalogue = MessageCatalogue::english();
  const struct {
    std::int64_t bytes;
    const char* decimal;
    const char* binary;
  } cases[] = {
      {0, "0 bytes", "0 bytes"},
      {1, "1 byte", "1 byte"},
      {999, "999 bytes", "999 bytes"},
      {1000, "1 kB", "1,000 bytes"},
      {1023, "1 kB", "1,023 bytes"},
      {4096, "4 kB", "4 KiB"},
      {999'499, "999 kB", "976 KiB"},
      {999'500, "1.0 MB", "976 KiB"},
      {99'949'999, "99.9 MB", "95.3 MiB"},
      {99'950'000, "100 MB", "95.3 MiB"},
      {999'499'999, "999 MB", "953 MiB"},
      {999'500'000, "1.0 GB", "953 MiB"},
      {1'234'567'890, "1.2 GB", "1.1 GiB"},
      {INT64_MAX, "9.2 EB", "8.0 EiB"},
      {-2'500'000, "-2.5 MB", "-2.4 MiB"},
      {INT64_MIN, "-9.2 EB", "-8.0 EiB"},
  };
  for (const auto& [bytes, decimal, binary] : cases) {
    EXPECT_EQ(ByteFormat::text(catalogue, bytes), decimal);
    EXPECT_EQ(MemoryFormat::text(catalogue, bytes), binary);
  }
}

}  // namespace
}  // namespace quorvane
