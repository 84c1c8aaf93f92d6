#include "quorvane/app/cli/review/ReviewAnswer.h"
#include "quorvane/base/Assert.h"
#include "quorvane/base/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace quorvane {
namespace {

void check(const reviewAnswer::Change& change) {
  require(!change.parts.empty(), "a change names something");
  for (const reviewAnswer::Part& part : change.parts) {
    if (const auto* numbers = std::get_if<reviewAnswer::Numbers>(&part))
      require(numbers->first >= 1 && numbers->first <= numbers->last, "numbers count from one, upwards");
    if (const auto* word = std::get_if<reviewAnswer::Word>(&part)) require(!word->word.empty(), "a word has letters");
  }
}

}  // namespace
}  // namespace quorvane

// Only "y" and "yes" mean yes, whatever stands around them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const std::string_view line(reinterpret_cast<const char*>(data), size);
  const ReviewAnswer answer = reviewAnswerFrom(line);
  if (std::holds_alternative<reviewAnswer::Yes>(answer)) {
    const std::size_t first = line.find_first_not_of(" \t\r,"), last = line.find_last_not_of(" \t\r,");
    const std::string word = asciiLowered(line.substr(first, last - first + 1));
    require(word == "y" || word == "yes", "nothing else means yes");
  }
  if (const auto* look = std::get_if<reviewAnswer::Look>(&answer))
    require(look->number >= 1, "items are counted from one");
  if (const auto* change = std::get_if<reviewAnswer::Change>(&answer)) check(*change);
  return 0;
}
