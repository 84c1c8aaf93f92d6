#include "quorvane/app/cli/ScanReport.h"

#include "quorvane/app/cli/Glyphs.h"
#include "quorvane/app/cli/ScanTable.h"
#include "quorvane/app/messages/ByteFormat.h"
#include "quorvane/app/messages/TextLayout.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t unreadableShown = 5;

// What could be read as a whole has a snapshot; of everything else the size is a lower bound.
bool isPartlyMeasured(const ScanItem& item) { return !item.snapshot; }

struct Sum {
  std::int64_t bytes = 0;
  std::int64_t count = 0;

  bool isLowerBound = false;

  void add(const ScanItem& item) {
    bytes += item.size;
    ++count;
    isLowerBound |= isPartlyMeasured(item);
  }
};

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

bool largestFirst(const ScanItem* left, const ScanItem* right) {
  return std::tie(right->size, left->url) < std::tie(left->size, right->url);
}

class ReportWriter {
 public:
  ReportWriter(const ScanResult& result, const MessageCatalogue& catalogue, const std::optional<FilePath>& home,
               const TextStyle& style)
      : result_(result),
        catalogue_(catalogue),
        gaps_(result),
        style_(style),
        glyphs_(glyphs(style.characters)),
        messages_{home, style.characters} {}

  std::string text() {
    writeGroups();
    writeNotes();
    writeUnreadable();
    writeSums();
    return std::move(text_);
  }

 private:
  using Groups = std::vector<std::pair<ScanCategory, std::vector<ScanRow>>>;

  std::string say(const Message& message) const { return catalogue_.text(message, messages_); }

  // A line wrapped behind its own beginning.
  void writeHanging(const std::string& line, std::size_t start) {
    const std::size_t width =
        style_.isTerminal ? std::max(style_.columns, start + 20) - start : std::numeric_limits<std::size_t>::max();
    for (const std::string& part : wrapped(line, width)) {
      text_ += std::string(start, ' ') + part + "\n";
    }
  }

  void writeGroups() {
    Groups groups = rowsByCategory();
    ScanColumns columns = scanColumns(allRows(groups), style_);
    if (columns.path == 0) {
      for (auto& [category, rows] : groups) tellApart(rows);
      columns = scanColumns(allRows(groups), style_);
    }
    for (const auto& [category, rows] : groups) {
      writeHeading(category);
      for (const ScanRow& row : rows) text_ += rowText(row, columns, style_);
      text_ += "\n";
    }
    if (columns.path > 0 || groups.empty()) return;
    writeHanging(catalogue_.text("cli.scan.pathsHidden"), 0);
    text_ += "\n";
  }

  void writeHeading(ScanCategory category) {
    Sum sum = sumWhere([&](const ScanItem& item) { return item.category == category; });
    sum.isLowerBound |= gaps_.areIn(category);
    const std::string title = catalogue_.text(titleKey(category)), amount = say(sumMessage("cli.scan.group", sum));
    const bool fits = !style_.isTerminal || displayWidth(title) + 2 + displayWidth(amount) <= style_.columns;
    text_ += toned(title, Tone::strong, style_) + (fits ? "  " : "\n  ") + toned(amount, Tone::faint, style_) + "\n";
  }

  static std::vector<ScanRow> allRows(const Groups& groups) {
    std::vector<ScanRow> all;
    for (const auto& [category, rows] : groups) all.insert(all.end(), rows.begin(), rows.end());
    return all;
  }

  // Where two items of a group have one name, and no path beside it, the path is the name.
  static void tellApart(std::vector<ScanRow>& rows) {
    std::map<std::string, int> uses;
    for (const ScanRow& row : rows) ++uses[row.name];
    for (ScanRow& row : rows)
      if (uses[row.name] > 1) row.name = row.path;
  }

  Groups rowsByCategory() const {
    Groups groups;
    for (const ScanCategory category : allCases<ScanCategory>()) {
      std::vector<const ScanItem*> items;
      for (const ScanItem& item : result_.items)
        if (item.category == category) items.push_back(&item);
      if (items.empty()) continue;
      std::ranges::sort(items, largestFirst);
      auto& [_, rows] = groups.emplace_back(category, std::vector<ScanRow>());
      for (const ScanItem* item : items) rows.push_back(rowOf(*item));
    }
    return groups;
  }

  ScanRow rowOf(const ScanItem& item) const {
    const FilePath& path = item.url.path;
    return {.isSelected = item.isSelected,
            .size = sizeText(item),
            .name = harmlessText(item.displayName, style_.characters),
            .safety = item.safety,
            .safetyTitle = catalogue_.text(titleKey(item.safety)),
            .reason = catalogue_.text(item.reasonKey),
            .path = MessageCatalogue::pathText(path, messages_)};
  }

  std::string sizeText(const ScanItem& item) const {
    const std::string size = ByteFormat::text(catalogue_, item.size);
    return isPartlyMeasured(item) ? std::string(glyphs_.lowerBound) + " " + size : size;
  }

  template <class Condition>
  Sum sumWhere(Condition condition) const {
    Sum sum;
    for (const ScanItem& item : result_.items)
      if (condition(item)) sum.add(item);
    return sum;
  }

  Message sumMessage(std::string key, const Sum& sum) const {
    std::string size = ByteFormat::text(catalogue_, sum.bytes);
    if (sum.isLowerBound) size = catalogue_.text({"cli.amount.atLeast", {{"size", size}}});
    return {std::move(key), {{"size", size}, {"count", sum.count}, {"mark", std::string(glyphs_.selected)}}};
  }

  void writeNotes() {
    const std::size_t before = text_.size();
    if (result_.coverage) {
      for (const ScanCoverageEntry& entry : result_.coverage->entries) {
        for (const ScanCoverageNote& note : entry.notes) writeNote(note);
        writeLeftOut(entry);
      }
      for (const ScanCoverageNote& notice : result_.coverage->notices) writeNote(notice);
    }
    if (text_.size() > before) text_ += "\n";
  }

  void writeNote(const ScanCoverageNote& note) {
    Message content{note.key, {{"names", MessageList{note.names}}}};
    if (note.count) content.arguments.push_back({"count", *note.count});
    Message line{note.path ? "cli.scan.noteOfItem" : "cli.scan.note", {{"text", say(content)}}};
    if (note.path) line.arguments.push_back({"path", *note.path});
    writeHanging(say(line), 0);
  }

  // Of a location that was read in part, the parts that were not are told on their own.
  void writeLeftOut(const ScanCoverageEntry& entry) {
    const bool isLeftOut =
        entry.status == ScanCoverageStatus::skipped || entry.status == ScanCoverageStatus::unreadable;
    if (!isTold(entry.reason) || !isLeftOut || !entry.unreadablePaths.empty()) return;
    writeHanging(say({"cli.scan.leftOut", {{"path", entry.path}, {"reason", MessageKey{reasonKey(entry.reason)}}}}), 0);
  }

  void writeUnreadable() {
    const auto& unreadable = gaps_.unreadable();
    if (unreadable.empty()) return;
    const auto count = std::ssize(unreadable);
    writeHanging(say({"cli.scan.unreadable", {{"count", std::int64_t{count}}}}), 0);
    std::size_t shown = 0;
    for (const FilePath& path : unreadable) {
      if (shown++ == unreadableShown) break;
      const std::string place = MessageCatalogue::pathText(path, messages_);
      const std::size_t width = style_.isTerminal ? style_.columns - 2 : place.size();
      text_ += "  " + shortened(place, width, glyphs_.ellipsis) + "\n";
    }
    const std::int64_t more = count - static_cast<std::int64_t>(unreadableShown);
    if (more > 0) writeHanging(say({"cli.scan.more", {{"count", more}}}), 2);
    text_ += "\n";
  }

  void writeSums() {
    if (result_.items.empty()) {
      writeHanging(catalogue_.text("cli.scan.nothing"), 0);
      return;
    }
    Sum found = sumWhere([](const ScanItem&) { return true; });
    const Sum selected = sumWhere([](const ScanItem& item) { return item.isSelected; });
    if (found.isLowerBound) writeHanging(say({"cli.scan.lowerBound", {{"mark", std::string(glyphs_.lowerBound)}}}), 0);
    found.isLowerBound |= gaps_.any();
    writeHanging(say(sumMessage("cli.scan.found", found)), 0);
    writeHanging(selected.count > 0 ? say(sumMessage("cli.scan.selected", selected))
                                    : catalogue_.text("cli.scan.nothingSelected"),
                 0);
  }

  const ScanResult& result_;
  const MessageCatalogue& catalogue_;
  const Gaps gaps_;
  const TextStyle& style_;
  const Glyphs& glyphs_;
  const MessageStyle messages_;
  std::string text_;
};

}  // namespace

std::string scanReport(const ScanResult& result, const MessageCatalogue& catalogue, const std::optional<FilePath>& home,
                       const TextStyle& style) {
  return ReportWriter(result, catalogue, home, style).text();
}

}  // namespace quorvane
