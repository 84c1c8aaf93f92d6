#include "quorvane/app/messages/HarmlessText.h"

#include "quorvane/app/messages/TextLayout.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

TEST(HarmlessTextTests, spellsOutWhatATerminalWouldObeyOrHide) {
  const struct {
    std::string_view text;
    const char* shown;
  } cases[] = {
      {"plain name (1).txt", "plain name (1).txt"},
      {"\xC3\xA4rger \xE2\x82\xAC \xE6\x97\xA5\xE6\x9C\xAC", "\xC3\xA4rger \xE2\x82\xAC \xE6\x97\xA5\xE6\x9C\xAC"},
      {"a\nb\tc\rd", "a\\nb\\tc\\rd"},
      {"\x1b]0;title\x07", "\\x1b]0;title\\x07"},
      {std::string_view("\0\x7f", 2), "\\x00\\x7f"},
      {"\xC2\x9B"
       "31m",
       "\\u{9b}31m"},
      {"gpj.\xE2\x80\xAE"
       "exe",
       "gpj.\\u{202e}exe"},
      {"\xE2\x81\xA6x\xE2\x81\xA9", "\\u{2066}x\\u{2069}"},
      {"a\xE2\x80\x8B"
       "b\xEF\xBB\xBF",
       "a\\u{200b}b\\u{feff}"},
      {"a\xE2\x80\xA8"
       "b\xE2\x80\xA9",
       "a\\u{2028}b\\u{2029}"},
      {"\xE3\x85\xA4", "\\u{3164}"},
      {"\xF3\xA0\x81\xA1", "\\u{e0061}"},
      {"\xCD\xB8", "\\u{378}"},
      {"a\xFF\xC3", "a\\xff\\xc3"},
      {"\xED\xA0\x80", "\\xed\\xa0\\x80"},
      {"\xC0\xAF", "\\xc0\\xaf"},
      {"\xCC\x81x", "\\u{301}x"},
      {"e\xCC\x81", "e\xCC\x81"},
      {"e\xCC\x81\xCC\x81\xCC\x81\xCC\x81\xCC\x81\xCC\x81", "e\xCC\x81\xCC\x81\xCC\x81\xCC\x81\\u{301}\\u{301}"},
  };
  for (const auto& [text, shown] : cases) {
    EXPECT_EQ(harmlessText(text), shown);
    EXPECT_EQ(harmlessText(harmlessText(text)), shown) << "harmless text comes back as it is";
  }
  EXPECT_EQ(harmlessText("\xC3\xA4 b", CharacterSet::ascii), "\\u{e4} b");
}

TEST(TextLayoutTests, measuresAndFitsByColumns) {
  const std::string_view japanese = "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E";  // three letters of two columns
  const std::string_view accents =
      "e\xCC\x81"
      "e\xCC\x81"
      "e\xCC\x81";
  EXPECT_EQ(displayWidth("abc"), 3U);
  EXPECT_EQ(displayWidth(japanese), 6U);
  EXPECT_EQ(displayWidth("\xE0\xA4\x95\xE0\xA4\xBF"), 2U) << "a vowel sign beside its letter";
  EXPECT_EQ(displayWidth("\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB"), 2U) << "a Korean syllable in three parts";
  EXPECT_EQ(displayWidth(accents), 3U);
  EXPECT_EQ(paddedRight(japanese, 8), std::string(japanese) + "  ");
  EXPECT_EQ(paddedLeft("12", 1), "12");

  EXPECT_EQ(shortened("abcdefgh", 8, "..."), "abcdefgh");
  EXPECT_EQ(shortened("abcdefgh", 7, "..."), "ab...gh");
  EXPECT_EQ(shortened("abcdefgh", 2, "..."), "ab");
  EXPECT_EQ(shortened("abcdefgh", 0, "..."), "");
  EXPECT_EQ(shortened(japanese, 5, "~"), "\xE6\x97\xA5~\xE8\xAA\x9E");
  EXPECT_EQ(shortened(accents, 2, "~"), "e\xCC\x81~") << "an accent stays with its letter";
  // A character that is spelled out is shown whole or not at all.
  EXPECT_EQ(shortened("\\x1b\\x1b\\x1b\\x1b", 12, "~"), "\\x1b~\\x1b");
  EXPECT_EQ(shortened("a\\u{202e}b\\u{200d}c", 14, "~"), "a~b\\u{200d}c");
  EXPECT_EQ(shortened("a\\nb\\tcdef", 6, "~"), "a\\n~ef");
  EXPECT_EQ(shortened("\\xyz\\u{}\\", 5, "~"), "\\x~}\\") << "these are only characters";
  EXPECT_EQ(wrapped("ab\\x1bcd", 5), (std::vector<std::string>{"ab", "\\x1bc", "d"}));
  EXPECT_EQ(wrapped("ab\\x1bcd", 3), (std::vector<std::string>{"ab", "\\x1", "bcd"}));
  for (std::size_t columns = 0; columns < 12; ++columns)
    EXPECT_LE(displayWidth(shortened("a\xE6\x97\xA5"
                                     "b\xE6\x9C\xAC"
                                     "c\xE8\xAA\x9E"
                                     "dddd",
                                     columns, "...")),
              columns);

  using Lines = std::vector<std::string>;
  EXPECT_EQ(wrapped("", 10), (Lines{""}));
  EXPECT_EQ(wrapped("one two three", 7), (Lines{"one two", "three"}));
  EXPECT_EQ(wrapped("one  abcdefghij k", 4), (Lines{"one", "abcd", "efgh", "ij k"}));
  EXPECT_EQ(wrapped(std::string(4'000'000, 'x'), 4).size(), 1'000'000u);  // in a moment, not in hours
  EXPECT_EQ(wrapped(japanese, 1), (Lines{"\xE6\x97\xA5", "\xE6\x9C\xAC", "\xE8\xAA\x9E"}));
}

}  // namespace
}  // namespace quorvane
