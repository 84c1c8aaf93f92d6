#include "quorvane/app/cli/arguments/Arguments.h"
#include "quorvane/app/messages/MessageCatalogue.h"
#include "quorvane/base/Assert.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace quorvane {
namespace {

std::vector<std::string> argumentsIn(std::string_view text) {
  std::vector<std::string> arguments;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\0'), text.size());
    arguments.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return arguments;
}

void check(const Invocation& asked, const std::vector<std::string>& given) {
  for (const std::string& subject : asked.subjects)
    require(std::ranges::find(given, subject) != given.end(), "what is to be worked on was named");
  const auto isGiven = [&](std::string_view option) { return std::ranges::find(given, option) != given.end(); };
  require(!asked.removal.isConfirmed || isGiven("--yes"), "nothing is confirmed without the word");
  require(!asked.limit || *asked.limit > 0, "a limit is a count");
  const bool takesPaths = asked.command == CommandName::trash || asked.command == CommandName::ignoreAdd;
  require(!takesPaths || !asked.subjects.empty(), "these commands are told where");
}

}  // namespace
}  // namespace quorvane

// Arguments with a NUL behind each: understood, or refused with a text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  static const MessageCatalogue catalogue = MessageCatalogue::english();
  const auto given = argumentsIn({reinterpret_cast<const char*>(data), size});
  const ParsedArguments parsed = parseArguments(given);
  if (const auto* asked = std::get_if<Invocation>(&parsed.request)) check(*asked, given);
  if (const auto* refused = std::get_if<CommandError>(&parsed.request)) {
    require(refused->code == ExitCode::wrongUsage, "arguments that are not understood are wrong usage");
    require(!catalogue.text(refused->message).empty(), "a refusal has a text");
  }
  return 0;
}
