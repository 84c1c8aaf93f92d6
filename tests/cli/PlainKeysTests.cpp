#include "quorvane/app/cli/terminal/PlainKeys.h"

#include <gtest/gtest.h>

#include <vector>

namespace quorvane {
namespace {

TEST(PlainKeysTests, passesOverKeysOfSeveralBytesInWhateverPiecesTheyCome) {
  const struct {
    std::vector<std::string> pieces;
    std::string keys;
  } cases[] = {
      {{"s q"}, "s q"},
      {{"\x1b[A\x1b[1;5C\x1bOq\x1bqr"}, "r"},  // an arrow, one with Ctrl, a key of the pad, Alt and q
      {{"\x1b", "Oq", "q"}, "q"},
      {{"s\x1bO", "q", "r"}, "sr"},
      {{"\x1b", "[", "1;", "5C", "q"}, "q"},
      {{"\x1b", "q"}, "q"},  // the escape key, and then another one
      {{"\x1b\x1b", "q"}, "q"},
      {{"", "q"}, "q"},
  };
  for (const auto& [pieces, keys] : cases) {
    PlainKeys typed;
    std::string all;
    for (const std::string& piece : pieces) all += typed.take(piece);
    EXPECT_EQ(all, keys) << testing::PrintToString(pieces);
  }
}

}  // namespace
}  // namespace quorvane
