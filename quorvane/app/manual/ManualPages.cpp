#include "quorvane/app/manual/ManualPages.h"

#include "quorvane/app/manual/BriefText.h"
#include "quorvane/app/manual/ManualTopics.h"
#include "quorvane/app/manual/RoffPage.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <sstream>
#include <utility>

namespace quorvane {

namespace {

using Commands = std::vector<const CommandDescription*>;

// "quorvane-scan"
std::string pageName(const CommandDescription& command) {
  std::string name = fullName(command);
  std::ranges::replace(name, ' ', '-');
  return name;
}

std::string bold(std::string_view text) { return fmt::format("\\fB{}\\fR", roffLiteral(text)); }

std::string italic(std::string_view text) { return fmt::format("\\fI{}\\fR", roffLiteral(text)); }

std::string reference(const CommandDescription& command) { return bold(pageName(command)) + "(1)"; }

class PageWriter {
 public:
  PageWriter(const MessageCatalogue& catalogue, const ManualEdition& edition, const CommandDescription& command)
      : catalogue_(catalogue),
        command_(command),
        below_(commandsBelow(command)),
        isRoot_(command.words.empty()),
        page_({pageName(command), edition.date, "Quorvane " + edition.version}) {}

  std::string write() && {
    name();
    synopsis();
    description();
    commands();
    described("manual.section.arguments", command_.arguments);
    described("manual.section.options", command_.options);
    described("manual.section.globalOptions", globalOptionDescriptions());
    topics("manual.section.exitStatus", exitStatusTopics(), bold);
    if (isRoot_) topics("manual.section.environment", environmentTopics(), bold);
    if (isRoot_) topics("manual.section.files", fileTopics(), italic);
    examples();
    seeAlso();
    return std::move(page_).text();
  }

 private:
  std::string text(std::string_view key) const { return catalogue_.text(key); }
  void section(std::string_view key) { page_.section(text(key)); }

  void name() {
    section("manual.section.name");
    const std::string key(isRoot_ ? "manual.summary" : command_.key);
    page_.line(
        fmt::format("{} \\- {}", roffLiteral(pageName(command_)), roffLiteral(briefText(catalogue_, {key, {}}))));
  }

  void synopsis() {
    section("manual.section.synopsis");
    if (!command_.onlyLeadsToOthers) page_.paragraph(roffUsage(usageOf(command_)));
    if (isRoot_) return;
    for (const CommandDescription* below : below_) page_.paragraph(roffUsage(usageOf(*below)));
  }

  void description() {
    section("manual.section.description");
    const std::string summary = text(command_.key);
    page_.paragraph(roffText(summary.ends_with('.') ? summary : summary + "."));
    paragraphs(text(aboutKey(command_.command)));
  }

  void paragraphs(std::string_view text) {
    while (!text.empty()) {
      const std::size_t end = std::min(text.find('\n'), text.size());
      page_.paragraph(roffText(text.substr(0, end)));
      text.remove_prefix(std::min(end + 1, text.size()));
    }
  }

  void commands() {
    if (below_.empty()) return;
    section("manual.section.commands");
    for (const CommandDescription* below : below_) {
      page_.tagged(isRoot_ ? reference(*below) : bold(fullName(*below)), roffText(text(below->key)));
      if (isRoot_ || (below->arguments.empty() && below->options.empty())) continue;
      page_.indent();
      for (const auto rows : {below->arguments, below->options}) describe(rows);
      page_.outdent();
    }
  }

  void described(std::string_view titleKey, std::span<const OptionDescription> rows) {
    if (rows.empty()) return;
    section(titleKey);
    describe(rows);
  }

  void describe(std::span<const OptionDescription> rows) {
    for (const OptionDescription& row : rows)
      page_.tagged(roffUsage(spellingOf(row)), roffText(catalogue_.text(meaningOf(row))));
  }

  void topics(std::string_view titleKey, std::span<const ManualTopic> topics, std::string (*styled)(std::string_view)) {
    section(titleKey);
    for (const ManualTopic& topic : topics) page_.tagged(styled(topic.name), roffText(text(topic.key)));
  }

  // Those of the commands on this page, each once.
  void examples() {
    section("manual.section.examples");
    std::vector<std::string> lines;
    addExamples(lines, command_);
    if (!isRoot_)
      for (const CommandDescription* below : below_) addExamples(lines, *below);
    page_.example(fmt::format("{}", fmt::join(lines, "\n")));
  }

  void addExamples(std::vector<std::string>& lines, const CommandDescription& command) const {
    std::istringstream examples(text(command.exampleKey));
    for (std::string line; std::getline(examples, line);)
      if (std::ranges::find(lines, line) == lines.end()) lines.push_back(line);
  }

  void seeAlso() {
    section("manual.section.seeAlso");
    std::string references;
    for (const CommandDescription* other : pages())
      if (other != &command_) references += (references.empty() ? "" : ", ") + reference(*other);
    page_.paragraph(references);
  }

  static Commands pages() {
    const CommandDescription& root = descriptionOf(CommandName::overview);
    Commands all = commandsBelow(root);
    all.insert(all.begin(), &root);
    return all;
  }

  const MessageCatalogue& catalogue_;
  const CommandDescription& command_;
  const Commands below_;
  const bool isRoot_;
  RoffPage page_;
};

}  // namespace

std::vector<ManualFile> manualPages(const MessageCatalogue& catalogue, const ManualEdition& edition) {
  std::vector<ManualFile> pages;
  for (const CommandDescription& command : commandDescriptions())
    if (!command.words.contains(' '))
      pages.push_back({pageName(command) + ".1", PageWriter(catalogue, edition, command).write()});
  return pages;
}

}  // namespace quorvane
