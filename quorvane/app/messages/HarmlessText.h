#pragma once

#include <string>
#include <string_view>

namespace quorvane {

/// What a terminal can show.
enum class CharacterSet { unicode, ascii };

/// Text of foreign origin (names of files, output of programs) made fit to be shown on one line: nothing in it can move
/// the cursor, change colours, reorder or hide other text.
///
/// Control characters, invisible and direction-changing ones, unassigned ones and piled-up accents are spelled out
/// ("\n", "\x1b", "\u{202e}"); a byte that is not valid UTF-8 as "\xff". With `ascii`, so is everything beyond ASCII.
/// Harmless text comes back as it is.
std::string harmlessText(std::string_view text, CharacterSet characters = CharacterSet::unicode);

}  // namespace quorvane
