#include "quorvane/app/cli/review/ReviewAnswer.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace quorvane {

namespace {

using namespace reviewAnswer;

constexpr std::string_view separators = " \t\r,";

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::ranges::find(words, word) != words.end();
}

std::optional<std::size_t> numberIn(std::string_view text) {
  std::size_t number = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || rest != text.data() + text.size() || number == 0) return std::nullopt;
  return number;
}

std::optional<Part> partFrom(std::string_view word) {
  if (const auto number = numberIn(word)) return Numbers{*number, *number};
  const std::size_t dash = word.find('-');
  if (dash != std::string_view::npos) {
    const auto first = numberIn(word.substr(0, dash)), last = numberIn(word.substr(dash + 1));
    if (!first || !last) return std::nullopt;
    return Numbers{std::min(*first, *last), std::max(*first, *last)};
  }
  return Word{std::string(word)};
}

std::vector<std::string_view> wordsIn(std::string_view line) {
  std::vector<std::string_view> words;
  while (true) {
    line.remove_prefix(std::min(line.find_first_not_of(separators), line.size()));
    if (line.empty()) return words;
    const std::size_t end = std::min(line.find_first_of(separators), line.size());
    words.push_back(line.substr(0, end));
    line.remove_prefix(end);
  }
}

}  // namespace

ReviewAnswer reviewAnswerFrom(std::string_view line) {
  const std::string lowered = asciiLowered(line);
  const std::vector<std::string_view> words = wordsIn(lowered);
  if (words.empty()) return No{};
  if (words.size() == 1) {
    if (isOneOf(words[0], {"y", "yes"})) return Yes{};
    if (isOneOf(words[0], {"n", "no", "q", "quit"})) return No{};
    if (isOneOf(words[0], {"e", "edit", "a", "all"})) return ShowAll{};
  }
  if (words[0].starts_with('?')) {
    std::string_view wanted = words[0].substr(1);
    if (wanted.empty() && words.size() == 2) wanted = words[1];
    const auto number = numberIn(wanted);
    return number ? ReviewAnswer(Look{*number}) : Help{};
  }
  Change change;
  for (const std::string_view word : words) {
    auto part = partFrom(word);
    if (!part) return Help{};
    change.parts.push_back(*std::move(part));
  }
  return change;
}

}  // namespace quorvane
