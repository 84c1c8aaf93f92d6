#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quorvane {

/// The word that a mistyped one was probably meant to be: the only one that begins with it (three letters or more), or
/// the one with the fewest letters added, left out, changed or swapped, if those are at most a third of it; the first
/// of several equally near ones.
std::optional<std::string> nearestWord(std::string_view mistyped, std::span<const std::string> words);

}  // namespace quorvane
