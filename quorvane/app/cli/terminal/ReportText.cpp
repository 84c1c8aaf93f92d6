#include "quorvane/app/cli/terminal/ReportText.h"

#include "quorvane/app/cli/terminal/Glyphs.h"
#include "quorvane/app/messages/ByteFormat.h"
#include "quorvane/app/messages/TextLayout.h"

#include <algorithm>
#include <limits>
#include <span>

namespace quorvane {

namespace {

constexpr std::size_t leastBehindIndent = 12, rowIndent = 2, gap = 2, leastBehindTitle = 24;
constexpr std::size_t amountColumns = 9;  // of "999 bytes"

std::size_t roomBehind(std::size_t start, const TextStyle& style) {
  if (!style.isLaidOut) return std::numeric_limits<std::size_t>::max();
  return style.columns - std::min(style.columns, start);
}

// Where it would leave little room, a narrower one.
std::size_t fittingIndent(std::size_t indent, const TextStyle& style) {
  if (!style.isLaidOut) return 0;
  return std::min(indent, style.columns - std::min(style.columns, leastBehindIndent));
}

}  // namespace

void ReportText::words(const std::string& text, std::size_t indent, std::size_t hanging) {
  const std::size_t further = fittingIndent(indent + hanging, style_.text);
  std::size_t start = std::min(indent, further);
  for (const std::string& part : wrapped(text, roomBehind(further, style_.text))) {
    text_ += std::string(start, ' ') + part + "\n";
    start = further;
  }
}

void ReportText::fitted(const std::string& text, std::size_t indent) {
  indent = fittingIndent(indent, style_.text);
  const std::string_view ellipsis = glyphs(style_.text.characters).ellipsis;
  text_ += std::string(indent, ' ') + shortened(text, roomBehind(indent, style_.text), ellipsis) + "\n";
}

void ReportText::row(const std::string& title, const std::string& text, std::size_t titleColumns) {
  if (!style_.text.isLaidOut) return asIs(title + ": " + text + "\n");
  const std::size_t start = rowIndent + titleColumns + gap;
  if (start + leastBehindTitle > style_.text.columns) {
    words(title, rowIndent);
    words(text, rowIndent + rowIndent);
    return;
  }
  std::string before = std::string(rowIndent, ' ') + paddedRight(title, titleColumns + gap);
  for (const std::string& part : wrapped(text, style_.text.columns - start)) {
    text_ += before + part + "\n";
    before = std::string(start, ' ');
  }
}

std::string ReportText::amount(std::int64_t bytes) const {
  const std::string text = ByteFormat::text(style_.catalogue, bytes);
  return style_.text.isLaidOut ? paddedLeft(text, amountColumns) : text;
}

void ReportText::facts(const std::vector<std::string>& facts) {
  const std::string between = style_.text.isLaidOut ? std::string(gap, ' ') : "\t";
  if (style_.text.isLaidOut) text_ += std::string(rowIndent, ' ');
  std::size_t start = rowIndent;
  for (const std::string& fact : std::span(facts).first(facts.size() - 1)) {
    text_ += fact + between;
    start += displayWidth(fact) + gap;
  }
  text_ += shortened(facts.back(), roomBehind(start, style_.text), glyphs(style_.text.characters).ellipsis) + "\n";
}

void ReportText::heading(const std::string& text) {
  for (const std::string& part : wrapped(text, roomBehind(0, style_.text)))
    text_ += toned(part, Tone::strong, style_.text) + "\n";
}

}  // namespace quorvane
