#include "quorvane/app/cli/HelpText.h"

#include "quorvane/app/cli/ScannedCategories.h"
#include "quorvane/app/messages/TextLayout.h"

#include <fmt/format.h>

#include <algorithm>

namespace quorvane {

namespace {

constexpr std::size_t widestText = 100;

class HelpWriter {
 public:
  HelpWriter(const MessageCatalogue& catalogue, const TextStyle& style)
      : catalogue_(catalogue), style_(style), width_(std::min(style.columns, widestText)) {}

  void paragraph(std::string_view key) {
    for (const std::string& line : wrapped(catalogue_.text(key), width_)) text_ += line + "\n";
  }

  void usage(const CommandDescription& command) {
    const std::string title = catalogue_.text("cli.help.usage");
    const std::size_t indent = displayWidth(title) + 2;
    std::string start = toned(title, Tone::strong, style_) + "  ";
    for (const std::string& line : wrapped(usageOf(command), width_ - std::min(width_, indent))) {
      text_ += start + line + "\n";
      start = std::string(indent, ' ');
    }
    text_ += "\n";
  }

  void title(std::string_view key) { text_ += "\n" + toned(catalogue_.text(key), Tone::strong, style_) + "\n"; }

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
    for (const OptionDescription& row : rows) longest = std::max(longest, spelling(row).size());
    for (const OptionDescription& row : rows) entry(row, longest + 4);
  }

  void examples(std::string_view key) {
    title("cli.help.examples");
    std::string lines = catalogue_.text(key);
    for (std::size_t start = 0; start <= lines.size();) {
      const std::size_t end = std::min(lines.find('\n', start), lines.size());
      text_ += "  " + lines.substr(start, end - start) + "\n";
      start = end + 1;
    }
  }

  std::string text() && { return std::move(text_); }

 private:
  static std::string spelling(const OptionDescription& row) {
    if (row.value.empty() || row.value == row.name) return std::string(row.name);
    return fmt::format("{} {}", row.name, row.value);
  }

  static std::string usageOf(const CommandDescription& command) {
    std::string usage = fullName(command);
    if (!commandsBelow(command).empty()) usage += command.onlyLeadsToOthers ? " COMMAND" : " [COMMAND]";
    for (const OptionDescription& option : command.options)
      usage += fmt::format(" [{}]{}", spelling(option), option.repeats ? "..." : "");
    usage += " [OPTIONS]";
    for (const OptionDescription& argument : command.arguments) usage += " " + argumentUsage(argument);
    return usage;
  }

  static std::string argumentUsage(const OptionDescription& argument) {
    const std::string name = argument.isOptional ? fmt::format("[{}]", argument.name) : std::string(argument.name);
    return argument.repeats ? name + "..." : name;
  }

  void entry(const OptionDescription& row, std::size_t indent) {
    const Message message{std::string(row.key), {{"categories", MessageList{scannedCategoryNames()}}}};
    std::string first = "  " + spelling(row);
    for (const std::string& line : wrapped(catalogue_.text(message), width_ > indent + 20 ? width_ - indent : 20)) {
      text_ += paddedRight(first, indent) + line + "\n";
      first.clear();
    }
  }

  const MessageCatalogue& catalogue_;
  const TextStyle& style_;
  const std::size_t width_;
  std::string text_;
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
