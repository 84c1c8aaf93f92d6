#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

// Steps through the texts that systems and their tools write for programs: lines of words.

namespace quorvane {

/// Takes a text up to its first `end`, which is dropped; all of it where there is none.
inline std::string_view takeUntil(std::string_view& rest, char end) {
  const std::size_t at = rest.find(end);
  const std::string_view taken = rest.substr(0, at);
  rest = at == std::string_view::npos ? std::string_view() : rest.substr(at + 1);
  return taken;
}

inline std::string_view takeLine(std::string_view& rest) { return takeUntil(rest, '\n'); }

/// Takes the next word of a line; empty at its end.
inline std::string_view takeWord(std::string_view& rest) {
  const auto isBlank = [&](std::size_t at) { return rest[at] == ' ' || rest[at] == '\t'; };
  std::size_t start = 0;
  while (start < rest.size() && isBlank(start)) ++start;
  std::size_t end = start;
  while (end < rest.size() && !isBlank(end)) ++end;
  const std::string_view word = rest.substr(start, end - start);
  rest.remove_prefix(end);
  return word;
}

/// The number that the text is, from its first byte to its last; nothing for any other text, and when it does not fit.
template <class Number>
std::optional<Number> wholeNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace quorvane
