#include "quorvane/app/cli/reports/ItemEvidence.h"

#include "quorvane/app/cli/reports/ItemTable.h"
#include "quorvane/app/cli/reports/ScanReport.h"
#include "quorvane/app/cli/terminal/DetailLines.h"

namespace quorvane {

namespace {

// Of the digest, as much as tells two states of a tree apart at a glance.
constexpr std::size_t digestShown = 16;

void writeBackup(DetailLines& lines, const MobileBackupMetadata& backup) {
  if (backup.deviceName) lines.add("cli.detail.device", *backup.deviceName);
  if (backup.backupDate) lines.add("cli.detail.backupDate", *backup.backupDate);
}

std::string shownSource(const Evidence& evidence) {
  const std::string source(evidence.source);
  return evidence.kind == EvidenceKind::ownersWord ? "https://" + source : "`" + source + "`";
}

void writeEvidence(DetailLines& lines, const Evidence& evidence, const ReportText& text) {
  if (evidence.kind == EvidenceKind::none) return;
  const std::string key = "evidence." + std::string(caseName(evidence.kind));
  lines.add("cli.detail.evidence", text.say({key, {{"source", shownSource(evidence)}}}));
  if (!evidence.broughtBy.empty() && evidence.broughtBy != evidence.source)
    lines.add("cli.detail.broughtBy", std::string(evidence.broughtBy));
}

}  // namespace

std::string itemEvidence(const ScanItem& item, const Evidence& evidence, const ScanResult& result,
                         const ReportStyle& style) {
  ReportText text(style);
  DetailLines lines(style);
  lines.add("cli.detail.path", item.url.path);
  lines.add("cli.detail.size", sizeText(item, style));
  lines.add("cli.detail.kind", MessageKey{std::string(titleKey(item.category))});
  lines.add("cli.detail.safety", MessageKey{std::string(titleKey(item.safety))});
  lines.add("cli.detail.reason", reasonText(item, style));
  writeEvidence(lines, evidence, text);
  if (item.snapshot) {
    lines.add("cli.detail.realPath", item.snapshot->canonicalPath);
    lines.add("cli.detail.digest", item.snapshot->digest.substr(0, digestShown));
  } else {
    lines.add("cli.detail.digest", MessageKey{"cli.detail.noSnapshot"});
  }
  lines.add("cli.detail.scannedAt", result.finishedAt);
  if (item.backupMetadata) writeBackup(lines, *item.backupMetadata);
  lines.add("cli.detail.id", uuidText(item.id));
  lines.writeTo(text);
  if (result.coverage)
    for (const ScanCoverageEntry& entry : result.coverage->entries)
      for (const ScanCoverageNote& note : entry.notes)
        if (note.path == item.url.path) text.line({"cli.scan.note", {{"text", text.say(contentOf(note))}}});
  text.blank();
  return text.take();
}

}  // namespace quorvane
