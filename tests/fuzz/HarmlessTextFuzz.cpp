// Whatever the bytes: what is shown is valid, without control characters, and fits where it is put.
#include "quorvane/app/messages/HarmlessText.h"
#include "quorvane/app/messages/TextLayout.h"
#include "quorvane/base/Assert.h"
#include "quorvane/base/Utf8.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::string shown = harmlessText(text);
  require(isValidUtf8(shown), "shown text is valid");
  require(std::ranges::none_of(shown, [](char c) { return (c >= '\0' && c < ' ') || c == '\x7F'; }),
          "shown text moves no cursor");
  require(harmlessText(shown) == shown, "harmless text comes back as it is");
  const std::string ascii = harmlessText(text, CharacterSet::ascii);
  require(displayWidth(ascii) == ascii.size(), "each ASCII character takes one column");
  for (const std::size_t columns : {0U, 1U, 2U, 7U, 40U}) {
    require(displayWidth(shortened(shown, columns, "...")) <= columns, "shortened text fits");
    for (const auto& line : wrapped(shown, columns))
      require(displayWidth(line) <= std::max<std::size_t>(columns, 2), "wrapped text fits");
  }
  return 0;
}
