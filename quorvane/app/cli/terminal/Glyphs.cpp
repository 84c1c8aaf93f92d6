#include "quorvane/app/cli/terminal/Glyphs.h"

#include <utility>

namespace quorvane {

namespace {

constexpr Glyphs unicodeGlyphs{.ellipsis = "…",
                               .selected = "●",
                               .lowerBound = "≥",
                               .barDone = "━",
                               .barLeft = "─",
                               .applications = "█",
                               .userFiles = "▓",
                               .otherUse = "▒",
                               .available = "░",
                               .heights = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"},
                               .down = "↓",
                               .up = "↑",
                               .minus = "−"};
constexpr Glyphs asciiGlyphs{.ellipsis = "...",
                             .selected = "*",
                             .lowerBound = ">=",
                             .barDone = "#",
                             .barLeft = ".",
                             .applications = "#",
                             .userFiles = "=",
                             .otherUse = "-",
                             .available = ".",
                             .heights = {"_", ".", ",", "-", "=", "+", "*", "#"},
                             .down = "in",
                             .up = "out",
                             .minus = "-"};

}  // namespace

const Glyphs& glyphs(CharacterSet characters) {
  switch (characters) {
    case CharacterSet::unicode: return unicodeGlyphs;
    case CharacterSet::ascii: return asciiGlyphs;
  }
  std::unreachable();
}

std::string repeated(std::string_view glyph, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += glyph;
  return text;
}

}  // namespace quorvane
