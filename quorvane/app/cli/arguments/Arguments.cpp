#include "quorvane/app/cli/arguments/Arguments.h"

#include "quorvane/app/cli/arguments/NearestWord.h"
#include "quorvane/app/cli/arguments/ReadInvocation.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>

namespace quorvane {

namespace {

std::string lastWord(std::string_view words) { return std::string(words.substr(words.rfind(' ') + 1)); }

Words namesBelow(const CommandDescription& command) {
  Words names;
  for (const CommandDescription* below : commandsBelow(command)) names.push_back(lastWord(below->words));
  return names;
}

// How many words stand before "--".
std::size_t asFarAsOptions(const Words& arguments) {
  return static_cast<std::size_t>(std::ranges::find(arguments, "--") - arguments.begin());
}

// The library names the option at fault only inside its complaint.
std::string_view optionIn(std::string_view complaint) {
  const std::size_t start = std::min(complaint.find("--"), complaint.size());
  const std::string_view rest = complaint.substr(start);
  return rest.substr(0, rest.find_first_not_of("-abcdefghijklmnopqrstuvwxyz"));
}

const OptionDescription* optionNamed(std::string_view name) {
  std::vector groups{globalOptionDescriptions()};
  for (const CommandDescription& command : commandDescriptions()) groups.push_back(command.options);
  for (const auto options : groups) {
    const auto found = std::ranges::find(options, name, &OptionDescription::name);
    if (found != options.end()) return &*found;
  }
  return nullptr;
}

Message valueMissing(std::string_view option) { return {"cli.error.missingValue", {{"option", std::string(option)}}}; }

// What is wrong with "--json=5", and with "--home=", where the library would take the next word for the value.
std::optional<Message> wrongAssignment(std::string_view word) {
  const std::size_t equals = word.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  const OptionDescription* option = optionNamed(word.substr(0, equals));
  if (option == nullptr) return std::nullopt;
  if (option->value.empty()) return Message{"cli.error.unexpectedValue", {{"option", std::string(option->name)}}};
  if (equals + 1 == word.size()) return valueMissing(option->name);
  return std::nullopt;
}

// Takes such words away, so that the others still tell the command; what is wrong with the first of them.
std::optional<Message> takeWrongAssignments(Words& words) {
  std::optional<Message> first;
  std::erase_if(words, [&](const std::string& word) {
    auto mistake = wrongAssignment(word);
    if (mistake && !first) first = mistake;
    return mistake.has_value();
  });
  return first;
}

// Takes options away in whose value's place another option stands, which the library would take for the value; what is
// wrong with the first of them.
std::optional<Message> takeOptionsWithoutValue(Words& words) {
  std::optional<Message> first;
  for (std::size_t i = 0; i + 1 < words.size();) {
    const OptionDescription* option = optionNamed(words[i]);
    const std::string& next = words[i + 1];
    const bool isMissing =
        option != nullptr && !option->value.empty() && optionNamed(next.substr(0, next.find('='))) != nullptr;
    if (!isMissing) {
      ++i;
      continue;
    }
    if (!first) first = valueMissing(option->name);
    words.erase(words.begin() + static_cast<std::ptrdiff_t>(i));
  }
  return first;
}

/// The grammar, and what was read by it. The library is told no text: what it throws is turned into our messages.
class ArgumentParser {
 public:
  ArgumentParser();
  Request parse(const Words& arguments);

 private:
  CLI::App* addCommand(const CommandDescription& description);
  void addOption(CLI::App& command, const OptionDescription& option);
  const CommandDescription& reached() const;
  CommandError seeingHelp(Message message) const;
  std::optional<CommandError> emptyValue() const;
  std::optional<CommandError> takeSubjects();
  CommandError unexpected(const std::string& given) const;
  CommandError unknownOption(const std::string& given) const;

  CLI::App app_;
  std::map<std::string_view, CLI::App*> commands_;  // by their words
  OptionValues values_;
  Words subjects_;
  Words operands_;  // what stands behind "--", whatever it looks like
};

ArgumentParser::ArgumentParser() {
  app_.name("quorvane");
  app_.set_help_flag("-h,--help");
  app_.allow_extras();
  app_.fallthrough();
  app_.require_subcommand(0, 1);
  app_.set_version_flag("--version", std::string());
  for (const OptionDescription& option : globalOptionDescriptions())
    if (option.name != "--version" && option.name != "--help") addOption(app_, option);
  for (const CommandDescription& description : commandDescriptions())
    commands_[description.words] = addCommand(description);
}

CLI::App* ArgumentParser::addCommand(const CommandDescription& description) {
  if (description.words.empty()) return &app_;
  const std::size_t space = description.words.rfind(' ');
  CLI::App* parent = space == std::string_view::npos ? &app_ : commands_.at(description.words.substr(0, space));
  CLI::App* command = parent->add_subcommand(lastWord(description.words));
  command->require_subcommand(0, 1);
  for (const OptionDescription& option : description.options) addOption(*command, option);
  return command;
}

// Of an option that is given several times and does not repeat, the last value holds.
void ArgumentParser::addOption(CLI::App& command, const OptionDescription& option) {
  const std::string name(option.name);
  if (option.value.empty()) {
    command.add_flag(name, values_.flags[option.name])->disable_flag_override();
  } else {
    command.add_option(name, values_.texts[option.name])->allow_extra_args(false);
  }
}

Request ArgumentParser::parse(const Words& arguments) {
  const auto end = arguments.begin() + static_cast<std::ptrdiff_t>(asFarAsOptions(arguments));
  Words options(arguments.begin(), end);
  if (end != arguments.end()) operands_.assign(end + 1, arguments.end());
  std::optional<Message> mistake = takeWrongAssignments(options);
  if (auto missing = takeOptionsWithoutValue(options); missing && !mistake) mistake = std::move(missing);
  try {
    app_.parse(Words(options.rbegin(), options.rend()));  // the library takes them from the back
  } catch (const CLI::CallForHelp&) {
    return HelpRequest{reached().command};
  } catch (const CLI::CallForVersion&) {
    return VersionRequest{};
  } catch (const CLI::ParseError& error) {
    if (!mistake) return seeingHelp(valueMissing(optionIn(error.what())));
  }
  if (mistake) return seeingHelp(*mistake);
  if (auto empty = emptyValue()) return *std::move(empty);
  if (auto wrong = takeSubjects()) return *std::move(wrong);
  return invocationOf(reached(), values_, subjects_);
}

// The command that the words led to.
const CommandDescription& ArgumentParser::reached() const {
  const CommandDescription* found = &descriptionOf(CommandName::overview);
  for (const CommandDescription& description : commandDescriptions())
    if (!description.words.empty() && commands_.at(description.words)->parsed()) found = &description;
  return *found;
}

CommandError ArgumentParser::seeingHelp(Message message) const {
  return wrongUsage(std::move(message), seeHelp(reached()));
}

// An empty value is none: most often it is a variable of a script that was not set.
std::optional<CommandError> ArgumentParser::emptyValue() const {
  for (const auto& [name, given] : values_.texts)
    if (std::ranges::find(given, "") != given.end()) return seeingHelp(valueMissing(name));
  return std::nullopt;
}

std::optional<CommandError> ArgumentParser::takeSubjects() {
  subjects_ = app_.remaining(true);
  const CommandDescription& command = reached();
  const bool takesSeveral = !command.arguments.empty() && command.arguments.front().repeats;
  const std::size_t most = command.arguments.empty() ? 0 : takesSeveral ? std::string::npos : 1;
  for (std::size_t i = 0; i < subjects_.size(); ++i) {
    const bool isOption = subjects_[i].size() > 1 && subjects_[i].starts_with('-');
    if (isOption) return unknownOption(subjects_[i]);
    if (i >= most) return unexpected(subjects_[i]);
  }
  if (command.onlyLeadsToOthers) {
    Words names = namesBelow(command);
    return wrongUsage({"cli.error.missingCommand", {{"command", fullName(command)}}}, choiceOf(names));
  }
  subjects_.insert(subjects_.end(), operands_.begin(), operands_.end());
  if (subjects_.size() > most) return seeingHelp({"cli.error.unexpectedArgument", {{"given", subjects_[most]}}});
  const bool isMissing = subjects_.empty() && most > 0 && !command.arguments.front().isOptional;
  if (isMissing || std::ranges::find(subjects_, "") != subjects_.end())
    return seeingHelp({"cli.error.missingArgument",
                       {{"command", fullName(command)}, {"argument", std::string(command.arguments.front().name)}}});
  return std::nullopt;
}

CommandError ArgumentParser::unexpected(const std::string& given) const {
  const Words names = namesBelow(reached());
  if (given == "help") return seeingHelp({"cli.error.unknownCommand", {{"given", given}}});
  if (names.empty()) return seeingHelp({"cli.error.unexpectedArgument", {{"given", given}}});
  return wrongUsage({"cli.error.unknownCommand", {{"given", given}}}, hintFor(given, names));
}

CommandError ArgumentParser::unknownOption(const std::string& given) const {
  const std::string name = given.substr(0, given.find('='));
  Words names;
  for (const OptionDescription& option : globalOptionDescriptions()) names.emplace_back(option.name);
  for (const OptionDescription& option : reached().options) names.emplace_back(option.name);
  if (std::ranges::find(names, name) != names.end())
    return wrongUsage({"cli.error.optionTooEarly", {{"option", name}, {"command", fullName(reached())}}},
                      seeHelp(reached()));
  const auto word = nearestWord(name, names);
  return wrongUsage({"cli.error.unknownOption", {{"given", name}}}, word ? hintFor(name, names) : seeHelp(reached()));
}

bool asksForJson(const Words& arguments) {
  const auto options = std::span(arguments).first(asFarAsOptions(arguments));
  return std::ranges::find(options, "--json") != options.end();
}

}  // namespace

ParsedArguments parseArguments(const std::vector<std::string>& arguments) {
  return {ArgumentParser().parse(arguments), asksForJson(arguments)};
}

}  // namespace quorvane
