#include "quorvane/app/cli/reports/ProcessList.h"

#include "quorvane/app/cli/reports/StatusWords.h"
#include "quorvane/app/cli/terminal/Glyphs.h"
#include "quorvane/app/messages/TextLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>

namespace quorvane {

namespace {

constexpr std::size_t pidColumns = 7, loadColumns = 7, memoryColumns = 10, nameColumns = 28, leastForPaths = 100,
                      leastForAll = 45;

class ProcessListWriter {
 public:
  explicit ProcessListWriter(const ReportStyle& style)
      : style_(style),
        words_(style),
        hasOnlyLoad_(style.text.isLaidOut && style.text.columns < leastForAll),
        hasPaths_(!style.text.isLaidOut || style.text.columns >= leastForPaths),
        text_(style) {}

  std::string text(std::span<const SystemProcessSample> processes) {
    if (style_.text.isLaidOut) writeHeads();
    for (const SystemProcessSample& process : processes) write(process);
    return text_.take();
  }

 private:
  void writeHeads() {
    const auto [pid, load, memory, name] = words_.processHeads();
    ReportText heads(style_);
    heads.facts(hasOnlyLoad_ ? std::vector{loadCell(load), name}
                             : std::vector{pidCell(pid), loadCell(load), memoryCell(memory), name});
    std::string line = heads.take();
    line.pop_back();  // the end of a line has no colour
    text_.asIs(toned(line, Tone::faint, style_.text) + "\n");
  }

  void write(const SystemProcessSample& process) {
    const std::string load = loadCell(fmt::format("{:.1f}", process.cpuPercent)), name = words_.harmless(process.name);
    if (hasOnlyLoad_) return text_.facts({load, name});
    std::vector facts{pidCell(std::to_string(process.pid)), load,
                      memoryCell(words_.amountOfMemory(process.memoryBytes)), hasPaths_ ? nameCell(name) : name};
    if (hasPaths_) facts.push_back(words_.harmless(process.executablePath.bytes));
    text_.facts(facts);
  }

  std::string cell(const std::string& text, std::size_t columns) const {
    return style_.text.isLaidOut ? paddedLeft(text, columns) : text;
  }
  std::string pidCell(const std::string& text) const { return cell(text, pidColumns); }
  std::string loadCell(const std::string& text) const { return cell(text, loadColumns); }
  std::string memoryCell(const std::string& text) const { return cell(text, memoryColumns); }
  std::string nameCell(const std::string& name) const {
    if (!style_.text.isLaidOut) return name;
    return paddedRight(shortened(name, nameColumns, glyphs(style_.text.characters).ellipsis), nameColumns);
  }

  const ReportStyle& style_;
  const StatusWords words_;
  const bool hasOnlyLoad_;  ///< beside the name
  const bool hasPaths_;
  ReportText text_;
};

}  // namespace

std::string processList(const std::vector<SystemProcessSample>& processes, std::size_t most, const ReportStyle& style) {
  if (processes.empty() || most == 0) return {};
  return ProcessListWriter(style).text(std::span(processes).first(std::min(most, processes.size())));
}

}  // namespace quorvane
