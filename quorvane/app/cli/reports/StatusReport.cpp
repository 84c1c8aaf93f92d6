#include "quorvane/app/cli/reports/StatusReport.h"

#include "quorvane/app/cli/reports/ProcessList.h"
#include "quorvane/app/cli/reports/StatusWords.h"
#include "quorvane/app/cli/terminal/Glyphs.h"
#include "quorvane/app/cli/terminal/Sparkline.h"
#include "quorvane/app/messages/TextLayout.h"
#include "quorvane/health/HealthScore.h"

#include <algorithm>
#include <cmath>

namespace quorvane {

namespace {

constexpr std::size_t indent = 2, gap = 2, valueColumns = 5, detailColumns = 28, widestGraph = 60;
constexpr std::size_t leastForGraphs = 60;
constexpr int manyPoints = 20;
constexpr std::size_t shownOnce = 10;

/// One line of the board.
struct Gauge {
  SystemStatusInput input;
  std::optional<double> percent;  ///< drawn as a bar, or the scale of its history
  std::span<const double> history = {};
  std::optional<double> most = 100;  ///< of the history; none: the highest value that is drawn
  std::string detail = {};
};

class StatusWriter {
 public:
  StatusWriter(const SystemStatusSnapshot& snapshot, const StatusHistories& histories, const ReportStyle& style)
      : snapshot_(snapshot),
        histories_(histories),
        style_(style),
        words_(style),
        hasGraphs_(style.text.isLaidOut && style.text.columns >= leastForGraphs),
        health_(healthScore(snapshot)),
        text_(style) {
    for (const SystemStatusInput input : allCases<SystemStatusInput>())
      titleColumns_ = std::max(titleColumns_, displayWidth(words_.title(input)));
  }

  std::string text() {
    writeScore();
    std::vector<SystemStatusInput> missing = snapshot_.notMeasured;  // those whose own line does not say so
    for (const Gauge& gauge : gauges()) {
      write(gauge);
      std::erase(missing, gauge.input);
    }
    if (!health_.deductions.empty() || !missing.empty()) text_.blank();
    for (const HealthDeduction& deduction : health_.deductions) write(deduction);
    if (!missing.empty()) text_.line(words_.notMeasured(missing), margin());
    return text_.take();
  }

 private:
  std::size_t margin() const { return style_.text.isLaidOut ? indent : 0; }

  void writeScore() {
    const std::string score = words_.score(health_), machine = words_.machine(snapshot_);
    if (!hasGraphs_) {
      text_.row(words_.healthTitle(), score, titleColumns_);
      text_.words(machine, margin());
      return;
    }
    const std::string start = std::string(indent, ' ') + paddedRight(words_.healthTitle(), titleColumns_ + gap);
    const std::size_t taken = displayWidth(start) + displayWidth(score) + gap + 1;
    text_.asIs(start + toned(score, toneOf(health_.level), style_.text) + std::string(gap + 1, ' ') +
               toned(fitted(machine, roomBehind(taken)), Tone::faint, style_.text) + "\n\n");
  }

  std::string fitted(const std::string& text, std::size_t columns) const {
    return shortened(text, columns, glyphs(style_.text.characters).ellipsis);
  }
  std::size_t roomBehind(std::size_t taken) const { return style_.text.columns - std::min(style_.text.columns, taken); }

  std::vector<Gauge> gauges() const {
    std::vector<Gauge> gauges{
        {SystemStatusInput::processor, snapshot_.cpuPercent, histories_.processor, 100, words_.processors(snapshot_)},
        {SystemStatusInput::memory, memoryPercent(snapshot_), histories_.memory, 100, words_.memory(snapshot_)},
        {SystemStatusInput::disk, diskUsedPercent(snapshot_), {}, 100, words_.disk(snapshot_)},
        {SystemStatusInput::network, std::nullopt, histories_.network, std::nullopt, words_.network(snapshot_)}};
    if (snapshot_.batteryPercent)
      gauges.push_back({SystemStatusInput::battery, snapshot_.batteryPercent, {}, 100, words_.battery(snapshot_)});
    gauges.push_back({SystemStatusInput::thermal, std::nullopt, {}, 100, words_.thermal(snapshot_.thermalLevel)});
    return gauges;
  }

  void write(const Gauge& gauge) {
    const bool isKnown = isMeasured(snapshot_, gauge.input);
    const std::string value = isKnown && gauge.percent ? words_.percent(*gauge.percent) : std::string();
    const std::string detail = isKnown ? gauge.detail : words_.notMeasured();
    const std::string title = words_.title(gauge.input);
    if (!hasGraphs_) return text_.row(title, value.empty() ? detail : value + ", " + detail, titleColumns_);
    const std::size_t taken = indent + titleColumns_ + gap + valueColumns + gap + gap + detailColumns;
    const std::size_t room = std::min(widestGraph, roomBehind(taken));
    text_.asIs(std::string(indent, ' ') + paddedRight(title, titleColumns_ + gap) + paddedLeft(value, valueColumns) +
               std::string(gap, ' ') + (isKnown ? graphOf(gauge, room) : std::string(room, ' ')) +
               std::string(gap, ' ') + fitted(detail, detailColumns) + "\n");
  }

  std::string graphOf(const Gauge& gauge, std::size_t columns) const {
    const Tone tone = toneOf(gauge.input);
    if (!gauge.history.empty() && columns > 0) {
      const auto drawn = gauge.history.last(std::min(gauge.history.size(), columns));
      const double most = gauge.most ? *gauge.most : std::ranges::max(drawn);
      return toned(sparkline(drawn, most, columns, style_.text.characters), tone, style_.text);
    }
    if (!gauge.percent) return std::string(columns, ' ');
    const auto filled = static_cast<std::size_t>(std::lround(*gauge.percent / 100 * static_cast<double>(columns)));
    const Glyphs& shown = glyphs(style_.text.characters);
    return toned(repeated(shown.barDone, filled), tone, style_.text) +
           toned(repeated(shown.barLeft, columns - filled), Tone::faint, style_.text);
  }

  void write(const HealthDeduction& deduction) {
    const std::string points = std::string(glyphs(style_.text.characters).minus) + std::to_string(deduction.points);
    text_.line(words_.deduction(deduction, snapshot_, points), margin(), style_.text.isLaidOut ? 4 : 0);
  }

  static Tone toneOf(SystemHealthLevel level) {
    switch (level) {
      case SystemHealthLevel::healthy: return Tone::good;
      case SystemHealthLevel::fair: return Tone::caution;
      case SystemHealthLevel::attention: return Tone::bad;
    }
    std::unreachable();
  }

  Tone toneOf(SystemStatusInput input) const {
    const auto found = std::ranges::find(health_.deductions, input, &HealthDeduction::input);
    if (found == health_.deductions.end()) return Tone::accent;
    return found->points >= manyPoints ? Tone::bad : Tone::caution;
  }

  const SystemStatusSnapshot& snapshot_;
  const StatusHistories& histories_;
  const ReportStyle& style_;
  const StatusWords words_;
  const bool hasGraphs_;
  const HealthScore health_;
  ReportText text_;
  std::size_t titleColumns_ = 0;
};

}  // namespace

std::string statusText(const SystemStatusSnapshot& snapshot, const StatusHistories& histories,
                       const ReportStyle& style) {
  return StatusWriter(snapshot, histories, style).text();
}

std::string statusReport(const SystemStatusSnapshot& snapshot, SystemProcessSortMode sort, const ReportStyle& style) {
  std::string text = statusText(snapshot, {}, style);
  const std::string list = processList(ordered(snapshot.topProcesses, sort), shownOnce, style);
  return list.empty() ? text : text + "\n" + list;
}

}  // namespace quorvane
