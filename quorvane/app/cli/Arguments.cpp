#include "quorvane/app/cli/Arguments.h"

#include "quorvane/app/cli/NearestWord.h"
#include "quorvane/app/cli/ScannedCategories.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>

namespace quorvane {

namespace {

using Words = std::vector<std::string>;

CommandError wrongUsage(Message message, std::optional<Message> hint) {
  return {ExitCode::wrongUsage, std::move(message), std::move(hint)};
}

Message seeHelp(const CommandDescription& command) { return {"cli.hint.seeHelp", {{"command", fullName(command)}}}; }

Message choiceOf(const Words& choices) { return {"cli.hint.choices", {{"choices", MessageList{choices}}}}; }

// The word that was probably meant, or else the whole choice.
Message hintFor(std::string_view given, const Words& choices) {
  if (const auto word = nearestWord(given, choices)) return {"cli.hint.didYouMean", {{"word", *word}}};
  return choiceOf(choices);
}

template <NamedEnumeration E>
Words namesOf() {
  Words names;
  for (const E value : allCases<E>()) names.emplace_back(caseName(value));
  return names;
}

std::string lastWord(std::string_view words) { return std::string(words.substr(words.rfind(' ') + 1)); }

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

/// The grammar, and what was read by it. The library is told no text: what it throws is turned into our messages.
class ArgumentParser {
 public:
  ArgumentParser();
  Request parse(const Words& arguments);

 private:
  CLI::App* addCommand(const CommandDescription& description);
  const CommandDescription& reached() const;
  CommandError missingValue(std::string_view option) const;
  std::optional<CommandError> emptyValue() const;
  void takeSubject();
  std::optional<CommandError> leftOver() const;
  CommandError unknownOption(const std::string& given) const;
  Request invocation() const;
  std::optional<CommandError> readLayout(GlobalOptions& options) const;
  std::optional<CommandError> readCategories(std::vector<ScanCategory>& categories) const;

  CLI::App app_;
  std::map<std::string_view, CLI::App*> commands_;  // by their words
  std::string home_, dataDirectory_, layout_, subject_;
  CLI::Option* homeOption_;
  CLI::Option* dataDirectoryOption_;
  CLI::Option* layoutOption_;
  bool json_ = false, isQuiet_ = false, hasNoColours_ = false;
  Words categories_;
  Words operands_;  // what stands behind "--", whatever it looks like
};

ArgumentParser::ArgumentParser() {
  app_.name("quorvane");
  app_.set_help_flag("-h,--help");
  app_.allow_extras();
  app_.fallthrough();
  app_.require_subcommand(0, 1);
  app_.set_version_flag("--version", std::string());
  const auto takeLast = CLI::MultiOptionPolicy::TakeLast;
  homeOption_ = app_.add_option("--home", home_)->multi_option_policy(takeLast);
  dataDirectoryOption_ = app_.add_option("--data-dir", dataDirectory_)->multi_option_policy(takeLast);
  layoutOption_ = app_.add_option("--layout", layout_)->multi_option_policy(takeLast);
  app_.add_flag("--json", json_)->disable_flag_override();
  app_.add_flag("--quiet", isQuiet_)->disable_flag_override();
  app_.add_flag("--no-color", hasNoColours_)->disable_flag_override();
  for (const CommandDescription& description : commandDescriptions())
    commands_[description.words] = addCommand(description);
  commands_.at("scan")->add_option("--category", categories_)->allow_extra_args(false);
}

CLI::App* ArgumentParser::addCommand(const CommandDescription& description) {
  if (description.words.empty()) return &app_;
  const std::size_t space = description.words.rfind(' ');
  CLI::App* parent = space == std::string_view::npos ? &app_ : commands_.at(description.words.substr(0, space));
  CLI::App* command = parent->add_subcommand(lastWord(description.words));
  command->require_subcommand(0, 1);
  if (!description.arguments.empty()) command->add_option("subject", subject_);
  return command;
}

Request ArgumentParser::parse(const Words& arguments) {
  const auto end = arguments.begin() + static_cast<std::ptrdiff_t>(asFarAsOptions(arguments));
  Words options(arguments.begin(), end);
  if (end != arguments.end()) operands_.assign(end + 1, arguments.end());
  const std::optional<Message> mistake = takeWrongAssignments(options);
  try {
    app_.parse(Words(options.rbegin(), options.rend()));  // the library takes them from the back
  } catch (const CLI::CallForHelp&) {
    return HelpRequest{reached().command};
  } catch (const CLI::CallForVersion&) {
    return VersionRequest{};
  } catch (const CLI::ParseError& error) {
    if (!mistake) return missingValue(optionIn(error.what()));
  }
  if (mistake) return wrongUsage(*mistake, seeHelp(reached()));
  if (auto empty = emptyValue()) return *std::move(empty);
  takeSubject();
  if (auto tooMuch = leftOver()) return *std::move(tooMuch);
  return invocation();
}

// The command that the words led to.
const CommandDescription& ArgumentParser::reached() const {
  const CommandDescription* found = &descriptionOf(CommandName::overview);
  for (const CommandDescription& description : commandDescriptions())
    if (!description.words.empty() && commands_.at(description.words)->parsed()) found = &description;
  return *found;
}

CommandError ArgumentParser::missingValue(std::string_view option) const {
  return wrongUsage(valueMissing(option), seeHelp(reached()));
}

// An empty value is none: most often it is a variable of a script that was not set.
std::optional<CommandError> ArgumentParser::emptyValue() const {
  for (const auto& [option, value] : {std::pair(homeOption_, &home_), std::pair(dataDirectoryOption_, &dataDirectory_),
                                      std::pair(layoutOption_, &layout_)})
    if (option->count() > 0 && value->empty()) return missingValue(option->get_name());
  if (std::ranges::find(categories_, "") != categories_.end()) return missingValue("--category");
  return std::nullopt;
}

void ArgumentParser::takeSubject() {
  if (operands_.empty() || reached().arguments.empty() || !subject_.empty()) return;
  subject_ = operands_.front();
  operands_.erase(operands_.begin());
}

std::optional<CommandError> ArgumentParser::leftOver() const {
  const Words rest = app_.remaining(true);
  const CommandDescription& command = reached();
  const auto tooMany = [&](const std::string& given) {
    return wrongUsage({"cli.error.unexpectedArgument", {{"given", given}}}, seeHelp(command));
  };
  Words names;
  for (const CommandDescription* below : commandsBelow(command)) names.push_back(lastWord(below->words));
  if (!rest.empty()) {
    const std::string& given = rest.front();
    if (given.size() > 1 && given.starts_with('-')) return unknownOption(given);
    if (names.empty()) return tooMany(given);
    return wrongUsage({"cli.error.unknownCommand", {{"given", given}}}, hintFor(given, names));
  }
  if (command.command == CommandName::ignore)
    return wrongUsage({"cli.error.missingCommand", {{"command", fullName(command)}}}, choiceOf(names));
  if (!operands_.empty()) return tooMany(operands_.front());
  if (!command.arguments.empty() && subject_.empty())
    return wrongUsage({"cli.error.missingArgument",
                       {{"command", fullName(command)}, {"argument", std::string(command.arguments.front().name)}}},
                      seeHelp(command));
  return std::nullopt;
}

CommandError ArgumentParser::unknownOption(const std::string& given) const {
  const std::string name = given.substr(0, given.find('='));
  Words names;
  for (const OptionDescription& option : globalOptionDescriptions()) names.emplace_back(option.name);
  for (const OptionDescription& option : reached().options) names.emplace_back(option.name);
  const auto word = nearestWord(name, names);
  return wrongUsage({"cli.error.unknownOption", {{"given", name}}}, word ? hintFor(name, names) : seeHelp(reached()));
}

Request ArgumentParser::invocation() const {
  Invocation asked;
  asked.command = reached().command;
  asked.subject = subject_;
  asked.options.json = json_;
  asked.options.isQuiet = isQuiet_;
  asked.options.hasNoColours = hasNoColours_;
  if (homeOption_->count() > 0) asked.options.home = home_;
  if (dataDirectoryOption_->count() > 0) asked.options.dataDirectory = dataDirectory_;
  if (auto mistake = readLayout(asked.options)) return *std::move(mistake);
  if (auto mistake = readCategories(asked.categories)) return *std::move(mistake);
  return asked;
}

std::optional<CommandError> ArgumentParser::readLayout(GlobalOptions& options) const {
  constexpr std::string_view automatic = "auto";
  if (layoutOption_->count() == 0 || layout_ == automatic) return std::nullopt;
  options.layout = caseFromName<HomeLayout>(layout_);
  if (options.layout) return std::nullopt;
  Words names = namesOf<HomeLayout>();
  names.insert(names.begin(), std::string(automatic));
  return wrongUsage({"cli.error.unknownLayout", {{"given", layout_}}}, hintFor(layout_, names));
}

std::optional<CommandError> ArgumentParser::readCategories(std::vector<ScanCategory>& categories) const {
  const std::vector<ScanCategory> known = scannedCategories();
  for (const std::string& name : categories_) {
    const auto category = std::ranges::find(known, name, [](ScanCategory each) { return caseName(each); });
    if (category == known.end())
      return wrongUsage({"cli.error.unknownCategory", {{"given", name}}}, hintFor(name, scannedCategoryNames()));
    if (std::ranges::find(categories, *category) == categories.end()) categories.push_back(*category);
  }
  return std::nullopt;
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
