#include "quorvane/app/cli/reports/DockerReport.h"

#include "quorvane/app/cli/reports/DockerReasons.h"
#include "quorvane/app/messages/TextLayout.h"
#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerSafetyPolicy.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace quorvane {

namespace {

/// What is shown of one object.
struct Row {
  std::int64_t size;
  DockerCleanupSafety safety;
  std::string name;
  Message reason;
  std::string selector;  // empty: no command removes it alone
};

Row rowOf(const DockerImageRecord& image) {
  return {image.sizeBytes, DockerSafetyPolicy::safetyOf(image), displayNameOf(image), dockerReason(image),
          "image:" + image.id};
}

Row rowOf(const DockerContainerRecord& container) {
  return {container.sizeBytes.value_or(0), DockerSafetyPolicy::safetyOf(container), container.name,
          dockerReason(container), "container:" + container.id};
}

Row rowOf(const DockerVolumeRecord& volume) {
  return {volume.sizeBytes.value_or(0), DockerSafetyPolicy::safetyOf(volume), volume.name, dockerReason(volume),
          "volume:" + volume.name};
}

Row rowOf(const DockerBuildCacheRecord& cache) {
  return {cache.sizeBytes, DockerSafetyPolicy::safetyOf(cache), cache.id, dockerReason(cache), {}};
}

Tone toneOf(DockerCleanupSafety safety) {
  switch (safety) {
    case DockerCleanupSafety::safe: return Tone::good;
    case DockerCleanupSafety::review: return Tone::caution;
    case DockerCleanupSafety::protected_: return Tone::bad;
  }
  std::unreachable();
}

class DockerReportWriter {
 public:
  DockerReportWriter(const DockerSurvey& survey, const ReportStyle& style)
      : snapshot_(survey.snapshot), notices_(survey.notices), style_(style), text_(style) {
    for (const DockerCleanupSafety safety : allCases<DockerCleanupSafety>())
      safetyColumns_ = std::max(safetyColumns_, displayWidth(titleOf(safety)));
  }

  std::string text() {
    if (const auto& scope = snapshot_.cleanupScope)
      text_.line({"cli.docker.engine", {{"context", scope->context}, {"endpoint", scope->endpoint}}});
    write(DockerResourceKind::images, snapshot_.images);
    write(DockerResourceKind::containers, snapshot_.containers);
    write(DockerResourceKind::volumes, snapshot_.volumes);
    write(DockerResourceKind::buildCache, snapshot_.buildCaches);
    text_.blank();
    for (const DockerNotice& notice : notices_)
      text_.line({notice.key, {{"resource", MessageKey{titleKey(notice.resource)}}, {"count", notice.count}}});
    if (!snapshot_.cleanupScope) text_.line({"cli.docker.engineUnpinned", {}});
    text_.line({"cli.docker.verdicts", {}});
    return text_.take();
  }

 private:
  template <class Record>
  void write(DockerResourceKind kind, const std::vector<Record>& records) {
    text_.blank();
    text_.heading(text_.say({titleKey(kind), {}}) + ": " + text_.say(sumOf(kind)));
    if (style_.text.isLaidOut) text_.line({detailKey(kind), {}}, 2);
    std::vector<Row> rows;
    rows.reserve(records.size());
    for (const Record& record : records) rows.push_back(rowOf(record));
    std::ranges::sort(rows, [](const Row& left, const Row& right) {
      return std::tie(right.size, left.name, left.selector) < std::tie(left.size, right.name, right.selector);
    });
    for (const Row& row : rows) write(row);
  }

  Message sumOf(DockerResourceKind kind) const {
    const auto usage = std::ranges::find(snapshot_.usages, kind, &DockerResourceUsage::kind);
    if (usage == snapshot_.usages.end() || usage->totalCount == 0) return {"cli.docker.nothing", {}};
    return {"cli.docker.summary.usage",
            {{"count", usage->totalCount},
             {"size", ByteCount{usage->sizeBytes}},
             {"reclaimable", ByteCount{usage->reclaimableBytes}}}};
  }

  std::string titleOf(DockerCleanupSafety safety) const { return text_.say({titleKey(safety), {}}); }

  // Laid out, the selector stands on a line of its own, whole, to be copied.
  void write(const Row& row) {
    const std::string amount = text_.amount(row.size), title = titleOf(row.safety), reason = text_.say(row.reason);
    const std::string name = harmlessText(row.name, style_.text.characters);
    const std::string selector = harmlessText(row.selector, style_.text.characters);
    if (!style_.text.isLaidOut) return text_.facts({amount, title, name, reason, selector});
    const std::string safety = toned(paddedRight(title, safetyColumns_), toneOf(row.safety), style_.text);
    text_.asIs("  " + amount + "  " + safety);
    text_.words(name + ": " + reason, 2, amount.size() + safetyColumns_ + 4);
    if (!selector.empty() && row.safety != DockerCleanupSafety::protected_) text_.words(selector, 4);
  }

  const DockerSnapshot& snapshot_;
  const std::vector<DockerNotice>& notices_;
  const ReportStyle& style_;
  ReportText text_;
  std::size_t safetyColumns_ = 0;
};

}  // namespace

std::string dockerReport(const DockerSurvey& survey, const ReportStyle& style) {
  return DockerReportWriter(survey, style).text();
}

}  // namespace quorvane
