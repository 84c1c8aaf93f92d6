#pragma once

#include "quorvane/app/messages/HarmlessText.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace quorvane {

/// The characters that stand for something, as a terminal can show them.
struct Glyphs {
  std::string_view ellipsis;
  std::string_view selected;
  std::string_view lowerBound;
  std::string_view barDone;
  std::string_view barLeft;
  std::string_view applications;  ///< this one and the next three: parts of a disk
  std::string_view userFiles;
  std::string_view otherUse;
  std::string_view available;
  std::array<std::string_view, 8> heights;  ///< of a line that goes up and down, the lowest first
  std::string_view down;
  std::string_view up;
  std::string_view minus;
};

const Glyphs& glyphs(CharacterSet characters);

/// The glyph so many times.
std::string repeated(std::string_view glyph, std::size_t count);

}  // namespace quorvane
