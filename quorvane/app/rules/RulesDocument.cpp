#include "quorvane/app/rules/RulesDocument.h"

#include "quorvane/app/messages/TextLayout.h"
#include "quorvane/base/Utf8.h"
#include "quorvane/core/SafetyLevel.h"
#include "quorvane/core/ScanCategory.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

constexpr std::size_t columns = 132;

/// One line of the document.
struct Row {
  ScanCategory category;
  std::string place;
  std::string program;
  SafetyLevel safety;
  std::string reasonKey;
  Evidence evidence;
};

std::string code(std::string_view text) { return fmt::format("`{}`", text); }

std::string_view folderOf(LocationBase base) {
  switch (base) {
    case LocationBase::home: return "~";
    case LocationBase::cache: return "~/.cache";
    case LocationBase::configuration: return "~/.config";
    case LocationBase::data: return "~/.local/share";
    case LocationBase::state: return "~/.local/state";
    case LocationBase::downloads: return "~/Downloads";
  }
  std::unreachable();
}

std::string locationOf(const LocationRule& rule) {
  return rule.path.empty() ? std::string(folderOf(rule.base)) : fmt::format("{}/{}", folderOf(rule.base), rule.path);
}

std::string listed(const std::vector<std::string_view>& names) {
  std::string list;
  for (const std::string_view name : names) (list += list.empty() ? "" : ", ") += code(name);
  return list;
}

/// "dmg pkg" as the names that it asks for.
std::string extensionsOf(const LocationRule& rule) {
  std::string list;
  for (std::string_view rest = rule.extensions; !rest.empty();) {
    const std::string_view one = rest.substr(0, rest.find(' '));
    (list += list.empty() ? "" : ", ") += code(fmt::format("*.{}", one));
    rest.remove_prefix(std::min(one.size() + 1, rest.size()));
  }
  return list;
}

/// Where the rule finds its items.
std::string placeOf(const LocationRule& rule) {
  const std::string location = locationOf(rule);
  switch (rule.subject) {
    case LocationSubject::itself: return code(location);
    case LocationSubject::parts: return fmt::format("{}: {}", code(location + "/"), listed(partsOf(rule)));
    case LocationSubject::taggedBelow: return code(location + "/**");
    case LocationSubject::entries:
    case LocationSubject::files: break;
  }
  if (!rule.extensions.empty()) return fmt::format("{}: {}", code(location + "/"), extensionsOf(rule));
  return rule.namePart.empty() ? code(location + "/*") : code(fmt::format("{}/*{}*", location, rule.namePart));
}

std::vector<Row> rowsOf(const LocationTable& table) {
  std::vector<Row> rows;
  rows.reserve(table.rules.size() + table.knownCaches.size());
  for (const LocationRule& rule : table.rules)
    rows.push_back({rule.category, placeOf(rule), std::string(rule.name), rule.safety, std::string(rule.reasonKey),
                    rule.evidence});
  for (const KnownCache& known : table.knownCaches)
    rows.push_back({known.category, code(fmt::format("~/.cache/{}", known.name)) + " +", std::string(known.program),
                    SafetyLevel::safe, "reason.regenerableCache", known.evidence});
  // What belongs to no one program stands behind what does.
  std::ranges::sort(
      rows, {}, [](const Row& row) { return std::tuple(row.program.empty(), asciiLowered(row.program), row.place); });
  return rows;
}

class Writer {
 public:
  explicit Writer(const MessageCatalogue& catalogue) : catalogue_(catalogue) {}

  void paragraph(const Message& message) {
    text_ += '\n';
    for (const std::string& line : wrapped(catalogue_.text(message), columns)) text_ += line + '\n';
  }
  void title(std::string_view marks, std::string_view key) {
    text_ += fmt::format("{}{} {}\n", text_.empty() ? "" : "\n", marks, say(key));
  }

  void tableOf(const std::vector<Row>& rows, ScanCategory category) {
    text_ += fmt::format("\n| {} | {} | {} | {} | {} |\n| --- | --- | --- | --- | --- |\n", say("rules.column.program"),
                         say("rules.column.place"), say("rules.column.safety"), say("rules.column.why"),
                         say("rules.column.comesBack"));
    for (const Row& row : rows)
      if (row.category == category)
        text_ += fmt::format("| {} | {} | {} | {}. {}. | {} |\n",
                             row.program.empty() ? say("rules.anyProgram") : row.program, row.place,
                             say(titleKey(row.safety)), say(row.reasonKey), whyOf(row.evidence), wayBackOf(row));
  }

  std::string take() { return std::move(text_); }

 private:
  std::string say(std::string_view key) const { return catalogue_.text(key); }

  std::string whyOf(const Evidence& evidence) const {
    const bool isPage = evidence.kind == EvidenceKind::ownersWord;
    const std::string_view host = evidence.source.substr(0, evidence.source.find('/'));
    std::string source = isPage ? fmt::format("[{}](https://{})", host, evidence.source) : code(evidence.source);
    return catalogue_.text({"evidence." + std::string(caseName(evidence.kind)), {{"source", std::move(source)}}});
  }

  std::string wayBackOf(const Row& row) const {
    if (!row.evidence.broughtBy.empty()) return code(row.evidence.broughtBy);
    if (row.safety == SafetyLevel::blocked || !comesBack(row.evidence.kind)) return say("rules.comesBack.never");
    return say(row.safety == SafetyLevel::safe ? "rules.comesBack.byItself" : "rules.comesBack.perhaps");
  }

  const MessageCatalogue& catalogue_;
  std::string text_;
};

}  // namespace

std::string rulesDocument(const LocationTable& table, const MessageCatalogue& catalogue) {
  const std::vector<Row> rows = rowsOf(table);
  Writer writer(catalogue);
  writer.title("#", "rules.title");
  for (const char* key : {"rules.about.file", "rules.about.verdicts", "rules.about.folders", "rules.about.known"})
    writer.paragraph({key, {}});
  const auto named = std::ranges::count_if(rows, [](const Row& row) { return !row.program.empty(); });
  writer.paragraph({"rules.about.count", {{"count", static_cast<std::int64_t>(named)}}});
  for (const ScanCategory category : allCases<ScanCategory>()) {
    if (std::ranges::count(rows, category, &Row::category) == 0) continue;
    writer.title("##", titleKey(category));
    writer.tableOf(rows, category);
  }
  return writer.take();
}

}  // namespace quorvane
