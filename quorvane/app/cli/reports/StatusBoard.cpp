#include "quorvane/app/cli/reports/StatusBoard.h"

#include "quorvane/app/cli/reports/ProcessList.h"
#include "quorvane/app/cli/terminal/Glyphs.h"
#include "quorvane/app/messages/TextLayout.h"

#include <fmt/format.h>

#include <algorithm>

namespace quorvane {

namespace {

std::size_t heightOf(const std::string& text) { return static_cast<std::size_t>(std::ranges::count(text, '\n')); }

/// As many lines from the beginning.
std::string firstLines(const std::string& text, std::size_t count) {
  std::size_t end = 0;
  while (count-- > 0 && end < text.size()) end = text.find('\n', end) + 1;
  return text.substr(0, end);
}

/// As many of its parts, which two spaces divide, as fit; those at the end go first.
std::string firstParts(std::string text, std::size_t columns, std::string_view ellipsis) {
  constexpr std::string_view division = "  ";
  for (std::size_t end = text.rfind(division); displayWidth(text) > columns && end > 0 && end != std::string::npos;
       end = text.rfind(division))
    text.resize(end);
  return shortened(text, columns, ellipsis);
}

std::string footer(const StatusBoardState& state, const ReportStyle& style) {
  const double seconds = std::chrono::duration<double>(state.interval).count();
  const std::string key = !state.hasKeys   ? "cli.status.interval"
                          : state.isPaused ? "cli.status.keysPaused"
                                           : "cli.status.keys";
  const std::string text = style.catalogue.text(
      {key, {{"other", MessageKey{titleKey(otherThan(state.sort))}}, {"seconds", fmt::format("{:g}", seconds)}}});
  const std::string fitted = firstParts("  " + text, style.text.columns, glyphs(style.text.characters).ellipsis);
  return toned(fitted, Tone::faint, style.text) + "\n";
}

/// The processes, with a blank line before, in so many lines; empty where not one of them has room.
std::string listOf(const std::vector<SystemProcessSample>& processes, const StatusBoardState& state, std::size_t rows,
                   const ReportStyle& style) {
  constexpr std::size_t aroundIt = 2;       // the blank line and the heads
  constexpr std::size_t ofOneMeasure = 10;  // what comes behind is there for the other measure
  if (rows <= aroundIt || processes.empty()) return {};
  return "\n" + processList(ordered(processes, state.sort), std::min(rows - aroundIt, ofOneMeasure), style);
}

}  // namespace

std::string statusBoard(const SystemStatusSnapshot& snapshot, const StatusHistories& histories,
                        const StatusBoardState& state, std::size_t rows, const ReportStyle& style) {
  const std::size_t room = rows - std::min<std::size_t>(rows, 1);
  std::string board = firstLines(statusText(snapshot, histories, style), room);
  board += listOf(snapshot.topProcesses, state, room - heightOf(board), style);
  board.append(room - heightOf(board), '\n');
  return board + footer(state, style);
}

}  // namespace quorvane
