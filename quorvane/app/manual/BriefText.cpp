#include "quorvane/app/manual/BriefText.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace quorvane {

std::string briefText(const MessageCatalogue& catalogue, const Message& message) {
  constexpr std::array<std::string_view, 4> ends{"; ", ": ", ". ", " ("};
  std::string text = catalogue.text(message);
  for (const std::string_view end : ends) text.resize(std::min(text.find(end), text.size()));
  if (text.ends_with('.')) text.pop_back();
  std::erase(text, '`');
  return text;
}

}  // namespace quorvane
