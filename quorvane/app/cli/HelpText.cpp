#include "quorvane/app/cli/HelpText.h"

#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/app/messages/TextLayout.h"

#include <algorithm>
#include <sstream>

namespace quorvane {

namespace {

constexpr std::size_t widestText = 100, exampleIndent = 8;

// Help is laid out wherever it goes: people page it.
TextStyle helpStyle(TextStyle style) {
  style.isLaidOut = true;
  style.columns = std::min(style.columns, widestText);
  return style;
}

class HelpWriter {
 public:
  HelpWriter(const MessageCatalogue& catalogue, const TextStyle& style)
      : style_{catalogue, std::nullopt, helpStyle(style)}, text_(style_) {}

  void usage(const CommandDescription& command) {
    const std::string title = style_.catalogue.text("cli.help.usage");
    const std::size_t indent = displayWidth(title) + 2, columns = style_.text.columns;
    std::string start = toned(title, Tone::strong, style_.text) + "  ";
    for (const std::string& line : wrapped(usageOf(command), columns - std::min(columns, indent))) {
      text_.asIs(start + line + "\n");
      start = std::string(indent, ' ');
    }
    text_.blank();
  }

  void paragraph(std::string_view key) { text_.words(style_.catalogue.text(key)); }

  void commands(const std::vector<const CommandDescription*>& below) {
    std::vector<OptionDescription> rows;
    rows.reserve(below.size());
    for (const CommandDescription* command : below)
      rows.push_back({command->words.substr(command->words.rfind(' ') + 1), "", command->key});
    section("cli.help.commands", rows);
  }

  void section(std::string_view titleKey, std::span<const OptionDescription> rows) {
    if (rows.empty()) return;
    title(titleKey);
    std::size_t longest = 0;
    for (const OptionDescription& row : rows) longest = std::max(longest, spellingOf(row).size());
    for (const OptionDescription& row : rows) text_.row(spellingOf(row), text_.say(meaningOf(row)), longest);
  }

  // Broken lines go on as a shell understands them.
  void examples(std::string_view key) {
    title("cli.help.examples");
    std::istringstream lines(style_.catalogue.text(key));
    for (std::string line; std::getline(lines, line);) {
      std::string joined;
      for (const std::string& part : wrapped(line, style_.text.columns - exampleIndent))
        joined += joined.empty() ? part : " \\\n      " + part;
      text_.asIs("  " + joined + "\n");
    }
  }

  std::string text() && { return text_.take(); }

 private:
  void title(std::string_view key) {
    text_.blank();
    text_.heading(style_.catalogue.text(key));
  }

  const ReportStyle style_;
  ReportText text_;
};

}  // namespace

std::string helpText(const CommandDescription& command, const MessageCatalogue& catalogue, const TextStyle& style) {
  HelpWriter writer(catalogue, style);
  writer.usage(command);
  writer.paragraph(command.key);
  writer.commands(commandsBelow(command));
  writer.section("cli.help.arguments", command.arguments);
  writer.section("cli.help.options", command.options);
  writer.section("cli.help.globalOptions", globalOptionDescriptions());
  writer.examples(command.exampleKey);
  return std::move(writer).text();
}

}  // namespace quorvane
