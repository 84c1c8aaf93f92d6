#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Fits harmless text into the columns of a terminal. A letter of East Asian width takes two, a combining mark none;
// a mark is not torn from its letter, and no character is torn apart that is spelled out ("\x1b", "\u{202e}") unless a
// whole line has no room for it.

namespace quorvane {

/// How many columns the text takes.
std::size_t displayWidth(std::string_view text);

/// The text filled up with spaces behind it; longer text as it is.
std::string paddedRight(std::string_view text, std::size_t columns);

/// The text filled up with spaces before it; longer text as it is.
std::string paddedLeft(std::string_view text, std::size_t columns);

/// The text, or as much of its beginning and its end as fits into `columns` with `ellipsis` between them.
std::string shortened(std::string_view text, std::size_t columns, std::string_view ellipsis);

/// The text in lines of at most `columns`, broken at spaces, and inside a word only where it is longer than a line. At
/// least one line; `columns` of less than two count as two.
std::vector<std::string> wrapped(std::string_view text, std::size_t columns);

}  // namespace quorvane
