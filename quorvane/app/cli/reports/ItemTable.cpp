#include "quorvane/app/cli/reports/ItemTable.h"

#include "quorvane/app/cli/reports/ScanTable.h"
#include "quorvane/app/cli/terminal/Glyphs.h"
#include "quorvane/app/messages/ByteFormat.h"
#include "quorvane/app/messages/TextLayout.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace quorvane {

namespace {

// What could be read as a whole has a snapshot; of everything else the size is a lower bound.
bool isPartlyMeasured(const ScanItem& item) { return !item.snapshot; }

bool largestFirst(const ListedItem& left, const ListedItem& right) {
  return std::tie(right.item->size, left.item->url) < std::tie(left.item->size, right.item->url);
}

using Rows = std::vector<std::vector<ScanRow>>;  // of each group

ScanRow rowOf(const ListedItem& listed, const ReportStyle& style) {
  const ScanItem& item = *listed.item;
  return {
      .number = listed.number == 0 ? "" : std::to_string(listed.number),
      .isSelected = item.isSelected,
      .selectedText = style.catalogue.text(item.isSelected ? "cli.scan.item.selected" : "cli.scan.item.notSelected"),
      .size = sizeText(item, style),
      .name = harmlessText(item.displayName, style.text.characters),
      .safety = item.safety,
      .safetyTitle = style.catalogue.text(titleKey(item.safety)),
      .reason = reasonText(item, style),
      .path = MessageCatalogue::pathText(item.url.path, style.messages())};
}

std::vector<ScanRow> allOf(const Rows& groups) {
  std::vector<ScanRow> all;
  for (const auto& rows : groups) all.insert(all.end(), rows.begin(), rows.end());
  return all;
}

// Where two items of a group have one name, and no path beside it, the path is the name.
void tellApart(std::vector<ScanRow>& rows) {
  std::map<std::string, int> uses;
  for (const ScanRow& row : rows) ++uses[row.name];
  for (ScanRow& row : rows)
    if (uses[row.name] > 1) row.name = row.path;
}

void writeHeading(ReportText& report, const ItemGroup& group, const ReportStyle& style, bool isSeenInPart) {
  ItemSum sum;
  for (const ListedItem& listed : group.items) sum.add(*listed.item);
  sum.isLowerBound |= isSeenInPart;
  const std::string title = style.catalogue.text(titleKey(group.category));
  const std::string amount = report.say(sumMessage("cli.scan.group", sum, style));
  if (!style.text.isLaidOut) return report.asIs(title + ": " + amount + "\n");
  if (displayWidth(title) + 2 + displayWidth(amount) > style.text.columns) {
    report.heading(title);
    return report.words(amount, 2);
  }
  report.asIs(toned(title, Tone::strong, style.text) + "  " + toned(amount, Tone::faint, style.text) + "\n");
}

}  // namespace

std::vector<ItemGroup> groupedByCategory(const std::vector<ScanItem>& items) {
  std::vector<ItemGroup> groups;
  for (const ScanCategory category : allCases<ScanCategory>()) {
    ItemGroup group{category, {}};
    for (const ScanItem& item : items)
      if (item.category == category) group.items.push_back({&item});
    std::ranges::sort(group.items, largestFirst);
    if (!group.items.empty()) groups.push_back(std::move(group));
  }
  return groups;
}

void ItemSum::add(const ScanItem& item) {
  bytes += item.size;
  ++count;
  isLowerBound |= isPartlyMeasured(item);
}

Message sumMessage(std::string key, const ItemSum& sum, const ReportStyle& style) {
  std::string size = ByteFormat::text(style.catalogue, sum.bytes);
  if (sum.isLowerBound) size = style.catalogue.text({"cli.amount.atLeast", {{"size", size}}});
  return {std::move(key),
          {{"size", size}, {"count", sum.count}, {"mark", std::string(glyphs(style.text.characters).selected)}}};
}

std::string reasonText(const ScanItem& item, const ReportStyle& style) {
  const std::string& key = item.reasonKey;
  if (!key.starts_with("reason.") && !key.starts_with("backup.reason."))
    return harmlessText(key, style.text.characters);
  return style.catalogue.text(Message{key, {}}, style.messages());
}

std::string sizeText(const ScanItem& item, const ReportStyle& style) {
  std::string size = ByteFormat::text(style.catalogue, item.size);
  if (!isPartlyMeasured(item)) return size;
  if (!style.text.isLaidOut) return style.catalogue.text({"cli.amount.atLeast", {{"size", size}}});
  return std::string(glyphs(style.text.characters).lowerBound) + " " + size;
}

bool writeItemTable(ReportText& report, const std::vector<ItemGroup>& groups, const ReportStyle& style,
                    const std::function<bool(ScanCategory)>& isSeenInPart) {
  Rows rows;
  for (const ItemGroup& group : groups) {
    std::vector<ScanRow>& ofGroup = rows.emplace_back();
    for (const ListedItem& listed : group.items) ofGroup.push_back(rowOf(listed, style));
  }
  ScanColumns columns = scanColumns(allOf(rows), style.text);
  if (columns.path == 0) {
    for (auto& ofGroup : rows) tellApart(ofGroup);
    columns = scanColumns(allOf(rows), style.text);
  }
  for (std::size_t i = 0; i < groups.size(); ++i) {
    writeHeading(report, groups[i], style, isSeenInPart && isSeenInPart(groups[i].category));
    for (const ScanRow& row : rows[i]) report.asIs(rowText(row, columns, style.text));
    report.blank();
  }
  return columns.path > 0 || groups.empty();
}

void writeScanTable(ReportText& report, const std::vector<ItemGroup>& groups, const ReportStyle& style,
                    const std::function<bool(ScanCategory)>& isSeenInPart) {
  if (writeItemTable(report, groups, style, isSeenInPart)) return;
  report.line({"cli.scan.pathsHidden", {}});
  report.blank();
}

}  // namespace quorvane
