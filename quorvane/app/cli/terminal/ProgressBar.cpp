#include "quorvane/app/cli/terminal/ProgressBar.h"

#include "quorvane/app/cli/terminal/Glyphs.h"
#include "quorvane/app/messages/TextLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace quorvane {

namespace {

constexpr std::size_t widestBar = 20;
constexpr double mostShown = 0.99;  // whatever is left to do, the end is told by its result
constexpr std::string_view clearLine = "\r\x1b[K";

std::string bar(double fraction, std::size_t barColumns, const TextStyle& style) {
  const auto filled = static_cast<std::size_t>(fraction * static_cast<double>(barColumns));
  const Glyphs& shown = glyphs(style.characters);
  return toned(repeated(shown.barDone, filled), Tone::accent, style) +
         toned(repeated(shown.barLeft, barColumns - filled), Tone::faint, style);
}

}  // namespace

std::string progressLine(const CleaningScanProgressUpdate& update, const MessageCatalogue& catalogue,
                         const MessageStyle& messages, const TextStyle& style) {
  const double fraction = std::min(update.progress, mostShown);
  const std::size_t barColumns = style.columns < 3 * widestBar - 1 ? style.columns / 4 : widestBar;
  // A progress of 0 is one that nobody knows.
  const std::string percent = fraction > 0 ? fmt::format(" {:3.0f}%  ", std::floor(fraction * 100)) : std::string();
  const std::size_t start = percent.empty() ? 0 : barColumns + percent.size();
  std::string about = catalogue.text(update.statusKey);
  if (update.activity && update.activity->inspectedItemCount > 0)
    about += "  " + catalogue.text({"cli.progress.entries", {{"count", update.activity->inspectedItemCount}}});
  const std::size_t room = style.columns - std::min(style.columns, start);
  const std::string_view ellipsis = glyphs(style.characters).ellipsis;
  std::string line = start > 0 ? bar(fraction, barColumns, style) + percent : std::string();
  line += shortened(about, room, ellipsis);
  const std::size_t left = room - std::min(room, displayWidth(about));
  if (update.activity && !update.activity->location.empty() && left > 12) {
    const std::string place = MessageCatalogue::pathText({update.activity->location}, messages);
    line += "  " + toned(shortened(place, left - 2, ellipsis), Tone::faint, style);
  }
  return line;
}

ProgressBar::ProgressBar(Console& console)
    : console_(console), isDrawn_(console.errorStyle().canRedraw && !console.isQuiet()) {}

void ProgressBar::show(const CleaningScanProgressUpdate& update) {
  if (!isDrawn_) return;
  furthest_ = std::max(furthest_, update.progress);
  CleaningScanProgressUpdate shown = update;
  shown.progress = furthest_;
  TextStyle style = console_.errorStyle();
  --style.columns;  // a full last column would move some terminals on to the next line
  const MessageStyle messages{console_.home(), style.characters};
  console_.errors().write(std::string(clearLine) + progressLine(shown, console_.catalogue(), messages, style));
  isVisible_ = true;
}

void ProgressBar::interrupt() {
  const TextStyle style = console_.errorStyle();
  if (console_.errors().isTerminal()) console_.errors().write(style.canRedraw ? clearLine : "\n");
  isVisible_ = false;
}

void ProgressBar::clear() {
  if (std::exchange(isVisible_, false)) console_.errors().write(clearLine);
}

}  // namespace quorvane
