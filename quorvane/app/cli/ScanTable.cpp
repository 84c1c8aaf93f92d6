#include "quorvane/app/cli/ScanTable.h"

#include "quorvane/app/cli/Glyphs.h"
#include "quorvane/app/messages/TextLayout.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t indent = 2, gap = 2, longestName = 36, shortestPath = 20;
constexpr std::size_t leastBesideEachOther = 48;  // of a name and a reason

template <class Text>
std::size_t widest(const std::vector<ScanRow>& rows, Text text) {
  std::size_t width = 0;
  for (const ScanRow& row : rows) width = std::max(width, displayWidth(row.*text));
  return width;
}

Tone toneOf(SafetyLevel safety) {
  switch (safety) {
    case SafetyLevel::safe: return Tone::good;
    case SafetyLevel::review: return Tone::caution;
    case SafetyLevel::blocked: return Tone::bad;
  }
  std::unreachable();
}

// Everything before the name.
std::size_t startWidth(const ScanColumns& columns) {
  return indent + (columns.number > 0 ? columns.number + 1 : 0) + 1 + 1 + columns.size + gap;
}

std::size_t reasonStart(const ScanColumns& columns) {
  if (columns.isReasonBelow) return startWidth(columns);
  return startWidth(columns) + columns.name + gap + columns.safety + gap;
}

}  // namespace

ScanColumns scanColumns(const std::vector<ScanRow>& rows, const TextStyle& style) {
  ScanColumns columns{.number = widest(rows, &ScanRow::number),
                      .size = widest(rows, &ScanRow::size),
                      .name = widest(rows, &ScanRow::name),
                      .safety = widest(rows, &ScanRow::safetyTitle),
                      .reason = widest(rows, &ScanRow::reason),
                      .path = widest(rows, &ScanRow::path)};
  columns.name = std::min(columns.name, longestName);
  if (!style.isTerminal) return columns;
  const std::size_t taken = reasonStart(columns) - columns.name;
  const std::size_t room = style.columns > taken ? style.columns - taken : 0;
  if (columns.name + columns.reason <= room) {
    const std::size_t left = room - columns.name - columns.reason;
    columns.path = left >= gap + shortestPath ? std::min(columns.path, left - gap) : 0;
    return columns;
  }
  columns.path = 0;
  if (room < leastBesideEachOther) {
    columns.isReasonBelow = true;
    columns.name = std::min(columns.name, room + gap);
    columns.reason = style.columns - std::min(style.columns, reasonStart(columns));
    return columns;
  }
  const std::size_t besideReason = room > columns.reason ? room - columns.reason : 0;
  columns.name = std::min(columns.name, std::max(besideReason, room * 2 / 5));
  columns.reason = room - columns.name;
  return columns;
}

std::string rowText(const ScanRow& row, const ScanColumns& columns, const TextStyle& style) {
  const Glyphs& shown = glyphs(style.characters);
  std::string text(indent, ' ');
  if (columns.number > 0) text += paddedLeft(row.number, columns.number) + " ";
  text += row.isSelected ? toned(shown.selected, Tone::good, style) : " ";
  text += " " + paddedLeft(row.size, columns.size) + std::string(gap, ' ');
  const std::string name = style.isTerminal ? shortened(row.name, columns.name, shown.ellipsis) : row.name;
  text += paddedRight(name, columns.name) + std::string(gap, ' ');
  const std::string nextLine = "\n" + std::string(reasonStart(columns), ' ');
  const std::size_t safetyWidth = columns.isReasonBelow ? 0 : columns.safety;
  text += toned(paddedRight(row.safetyTitle, safetyWidth), toneOf(row.safety), style);
  text += columns.isReasonBelow ? nextLine : std::string(gap, ' ');
  const auto reason = wrapped(row.reason, columns.reason);
  if (columns.path > 0) {
    const std::string path = shortened(row.path, columns.path, shown.ellipsis);
    return text + paddedRight(reason.front(), columns.reason) + std::string(gap, ' ') +
           toned(path, Tone::faint, style) + "\n";
  }
  for (std::size_t line = 0; line < reason.size(); ++line) text += (line == 0 ? "" : nextLine) + reason[line];
  return text + "\n";
}

}  // namespace quorvane
