#include "quorvane/app/cli/reports/ScanReport.h"

#include "quorvane/app/cli/reports/ItemTable.h"
#include "quorvane/app/cli/terminal/Glyphs.h"

#include <set>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t unreadableShown = 5;

/// What the scan could not see.
class Gaps {
 public:
  explicit Gaps(const ScanResult& result) {
    if (result.unreadablePaths) unreadable_.insert(result.unreadablePaths->begin(), result.unreadablePaths->end());
    if (!result.coverage) return;
    for (const ScanCoverageEntry& entry : result.coverage->entries) {
      unreadable_.insert(entry.unreadablePaths.begin(), entry.unreadablePaths.end());
      if (entry.status == ScanCoverageStatus::partial || entry.status == ScanCoverageStatus::unreadable)
        partial_.insert(entry.category);
    }
  }

  const std::set<FilePath>& unreadable() const { return unreadable_; }
  bool any() const { return !partial_.empty() || !unreadable_.empty(); }
  bool areIn(ScanCategory category) const { return partial_.contains(category); }

 private:
  std::set<FilePath> unreadable_;
  std::set<ScanCategory> partial_;
};

/// Whether a place that was left out, or read in part, is worth a line.
bool isTold(ScanCoverageReason reason) {
  switch (reason) {
    case ScanCoverageReason::read:
    case ScanCoverageReason::missing:
    case ScanCoverageReason::categoryNotAsked: return false;
    case ScanCoverageReason::notAFolder:
    case ScanCoverageReason::link:
    case ScanCoverageReason::ignored:
    case ScanCoverageReason::cloud:
    case ScanCoverageReason::mountPoint:
    case ScanCoverageReason::permissionDenied:
    case ScanCoverageReason::changing:
    case ScanCoverageReason::failed:
    case ScanCoverageReason::ownData:
    case ScanCoverageReason::overlaps: return true;
  }
  std::unreachable();
}

std::string reasonKey(ScanCoverageReason reason) { return "coverage.reason." + std::string(caseName(reason)); }

class ReportWriter {
 public:
  ReportWriter(const ScanResult& result, const ReportStyle& style)
      : result_(result), gaps_(result), style_(style), report_(style_) {}

  std::string text() {
    writeScanTable(report_, groupedByCategory(result_.items), style_,
                   [this](ScanCategory category) { return gaps_.areIn(category); });
    writeNotes();
    writeUnreadable();
    writeSums();
    return report_.take();
  }

  std::string coverageText() {
    writeNotes();
    writeUnreadable();
    return report_.take();
  }

 private:
  void writeNotes() {
    const std::size_t before = report_.size();
    if (result_.coverage) {
      for (const ScanCoverageEntry& entry : result_.coverage->entries) {
        for (const ScanCoverageNote& note : entry.notes) writeNote(note);
        writeLeftOut(entry);
      }
      for (const ScanCoverageNote& notice : result_.coverage->notices) writeNote(notice);
    }
    if (report_.size() > before) report_.blank();
  }

  void writeNote(const ScanCoverageNote& note) {
    Message line{note.path ? "cli.scan.noteOfItem" : "cli.scan.note", {{"text", report_.say(contentOf(note))}}};
    if (note.path) line.arguments.push_back({"path", *note.path});
    report_.line(line);
  }

  // Of a location that was read in part, the parts that were not are told on their own.
  void writeLeftOut(const ScanCoverageEntry& entry) {
    const bool isLeftOut =
        entry.status == ScanCoverageStatus::skipped || entry.status == ScanCoverageStatus::unreadable;
    if (!isTold(entry.reason) || !isLeftOut || !entry.unreadablePaths.empty()) return;
    report_.line({"cli.scan.leftOut", {{"path", entry.path}, {"reason", MessageKey{reasonKey(entry.reason)}}}});
  }

  void writeUnreadable() {
    const auto& unreadable = gaps_.unreadable();
    if (unreadable.empty()) return;
    const auto count = std::ssize(unreadable);
    report_.line({"cli.scan.unreadable", {{"count", std::int64_t{count}}}});
    std::size_t shown = 0;
    for (const FilePath& path : unreadable) {
      if (shown++ == unreadableShown) break;
      report_.fitted(report_.path(path), 2);
    }
    const std::int64_t more = count - static_cast<std::int64_t>(unreadableShown);
    if (more > 0) report_.line({"cli.scan.more", {{"count", more}}}, 2);
    report_.blank();
  }

  void writeSums() {
    if (result_.items.empty()) return report_.line({"cli.scan.nothing", {}});
    ItemSum found = sumOf(result_.items, [](const ScanItem&) { return true; });
    const ItemSum selected = sumOf(result_.items, [](const ScanItem& item) { return item.isSelected; });
    const std::string mark(glyphs(style_.text.characters).lowerBound);
    if (found.isLowerBound && style_.text.isLaidOut) report_.line({"cli.scan.lowerBound", {{"mark", mark}}});
    found.isLowerBound |= gaps_.any();
    report_.line(sumMessage("cli.scan.found", found, style_));
    if (selected.count == 0) return report_.line({"cli.scan.nothingSelected", {}});
    report_.line(sumMessage(style_.text.isLaidOut ? "cli.scan.selected" : "cli.scan.selectedPlain", selected, style_));
  }

  const ScanResult& result_;
  const Gaps gaps_;
  const ReportStyle& style_;
  ReportText report_;
};

}  // namespace

Message contentOf(const ScanCoverageNote& note) {
  Message content{note.key, {{"names", MessageList{note.names}}}};
  if (note.count) content.arguments.push_back({"count", *note.count});
  return content;
}

std::string coverageReport(const ScanResult& result, const ReportStyle& style) {
  return ReportWriter(result, style).coverageText();
}

std::string scanReport(const ScanResult& result, const MessageCatalogue& catalogue, const std::optional<FilePath>& home,
                       const TextStyle& style) {
  const ReportStyle reportStyle{catalogue, home, style};
  return ReportWriter(result, reportStyle).text();
}

}  // namespace quorvane
