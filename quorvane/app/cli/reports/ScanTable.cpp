#include "quorvane/app/cli/reports/ScanTable.h"

#include "quorvane/app/cli/terminal/Glyphs.h"
#include "quorvane/app/messages/TextLayout.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t indent = 2, gap = 2, longestName = 36, shortestPath = 20;
constexpr std::size_t leastBesideEachOther = 48;  // of a name and a reason
constexpr std::size_t leastName = 14, stackedIndent = 4, leastStacked = 8;

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

std::string startText(const ScanRow& row, const ScanColumns& columns, const TextStyle& style) {
  std::string text(indent, ' ');
  if (columns.number > 0) text += paddedLeft(row.number, columns.number) + " ";
  text += row.isSelected ? toned(glyphs(style.characters).selected, Tone::good, style) : " ";
  return text + " " + paddedLeft(row.size, columns.size) + std::string(gap, ' ');
}

std::string plainText(const ScanRow& row) {
  std::string text = row.number.empty() ? "" : row.number + "\t";
  for (const std::string* fact : {&row.size, &row.safetyTitle, &row.selectedText, &row.name, &row.reason})
    text += *fact + "\t";
  return text + row.path + "\n";
}

std::size_t reasonStart(const ScanColumns& columns) {
  if (columns.isStacked) return stackedIndent;
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
  if (!style.isLaidOut) return columns;
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
    columns.isStacked = room + gap < std::min(columns.name, leastName);
    const std::size_t behindStart = std::max(style.columns, reasonStart(columns) + leastStacked) - reasonStart(columns);
    columns.name = columns.isStacked ? behindStart : std::min(columns.name, room + gap);
    columns.reason = behindStart;
    return columns;
  }
  const std::size_t besideReason = room > columns.reason ? room - columns.reason : 0;
  columns.name = std::min(columns.name, std::max(besideReason, room * 2 / 5));
  columns.reason = room - columns.name;
  return columns;
}

std::string rowText(const ScanRow& row, const ScanColumns& columns, const TextStyle& style) {
  if (!style.isLaidOut) return plainText(row);
  const std::string nextLine = "\n" + std::string(reasonStart(columns), ' ');
  std::string text = startText(row, columns, style);
  const std::string name = shortened(row.name, columns.name, glyphs(style.characters).ellipsis);
  if (!columns.isStacked) text += paddedRight(name, columns.name) + std::string(gap, ' ');
  const bool isSafetyBelow = columns.isStacked && startWidth(columns) + columns.safety > style.columns;
  if (isSafetyBelow) text += nextLine;
  text += toned(paddedRight(row.safetyTitle, columns.isReasonBelow ? 0 : columns.safety), toneOf(row.safety), style);
  if (columns.isStacked) text += nextLine + name;
  text += columns.isReasonBelow ? nextLine : std::string(gap, ' ');
  const auto reason = wrapped(row.reason, columns.reason);
  if (columns.path > 0) {
    const std::string path = shortened(row.path, columns.path, glyphs(style.characters).ellipsis);
    return text + paddedRight(reason.front(), columns.reason) + std::string(gap, ' ') +
           toned(path, Tone::faint, style) + "\n";
  }
  for (std::size_t line = 0; line < reason.size(); ++line) text += (line == 0 ? "" : nextLine) + reason[line];
  return text + "\n";
}

}  // namespace quorvane
