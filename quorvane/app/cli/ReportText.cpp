#include "quorvane/app/cli/ReportText.h"

#include "quorvane/app/cli/Glyphs.h"
#include "quorvane/app/messages/TextLayout.h"

#include <algorithm>
#include <limits>

namespace quorvane {

namespace {

constexpr std::size_t narrowest = 20;

std::size_t roomBehind(std::size_t indent, const TextStyle& style) {
  if (!style.isTerminal) return std::numeric_limits<std::size_t>::max();
  return std::max(style.columns, indent + narrowest) - indent;
}

}  // namespace

void ReportText::words(const std::string& text, std::size_t indent, std::size_t hanging) {
  std::size_t start = indent;
  for (const std::string& part : wrapped(text, roomBehind(indent + hanging, style_.text))) {
    text_ += std::string(start, ' ') + part + "\n";
    start = indent + hanging;
  }
}

void ReportText::fitted(const std::string& text, std::size_t indent) {
  const std::string_view ellipsis = glyphs(style_.text.characters).ellipsis;
  text_ += std::string(indent, ' ') + shortened(text, roomBehind(indent, style_.text), ellipsis) + "\n";
}

void ReportText::heading(const std::string& text) {
  for (const std::string& part : wrapped(text, roomBehind(0, style_.text)))
    text_ += toned(part, Tone::strong, style_.text) + "\n";
}

}  // namespace quorvane
