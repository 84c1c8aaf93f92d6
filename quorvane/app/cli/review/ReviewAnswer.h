#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane {

/// What a person answered to "Move these items?".
namespace reviewAnswer {
struct Yes {
  bool operator==(const Yes&) const = default;
};
struct No {
  bool operator==(const No&) const = default;
};
/// Show everything that was found, not only what is selected.
struct ShowAll {
  bool operator==(const ShowAll&) const = default;
};
/// Anything that is no answer.
struct Help {
  bool operator==(const Help&) const = default;
};
/// Look at one item.
struct Look {
  std::size_t number = 0;

  bool operator==(const Look&) const = default;
};
/// Select these items or not: numbers from `first` to `last`.
struct Numbers {
  std::size_t first = 0;
  std::size_t last = 0;

  bool operator==(const Numbers&) const = default;
};
/// Select these or not: all of a category or a safety level.
struct Word {
  std::string word;

  bool operator==(const Word&) const = default;
};
using Part = std::variant<Numbers, Word>;
struct Change {
  std::vector<Part> parts;

  bool operator==(const Change&) const = default;
};
}  // namespace reviewAnswer

using ReviewAnswer = std::variant<reviewAnswer::Yes, reviewAnswer::No, reviewAnswer::ShowAll, reviewAnswer::Help,
                                  reviewAnswer::Look, reviewAnswer::Change>;

/// Reads one line: "y", "n" or nothing, "e", "?", "?3", or numbers, ranges and words with spaces or commas between.
ReviewAnswer reviewAnswerFrom(std::string_view line);

}  // namespace quorvane
