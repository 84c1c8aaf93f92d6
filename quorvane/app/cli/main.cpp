#include "quorvane/app/cli/CommandLine.h"
#include "quorvane/platform/SystemPlatform.h"

#include <array>
#include <climits>
#include <string_view>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace {

using namespace quorvane;

// A standard channel that is closed would be given to the next file that is opened. The stand-in can be neither read
// nor written the right way round, so that using it fails as using the closed one would.
void keepStandardChannelsTaken() {
  for (const int channel : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (::fcntl(channel, F_GETFD) == -1) ::open("/dev/null", channel == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

EnvironmentVariables variablesOf(char** environment) {
  EnvironmentVariables variables;
  for (char** entry = environment; *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    const std::size_t equals = text.find('=');
    if (equals != std::string_view::npos) variables.emplace(text.substr(0, equals), text.substr(equals + 1));
  }
  return variables;
}

std::optional<FilePath> workingFolder() {
  std::array<char, PATH_MAX> buffer{};
  if (::getcwd(buffer.data(), buffer.size()) == nullptr) return std::nullopt;
  return FilePath{buffer.data()};
}

}  // namespace

int main(int count, char** values, char** environment) {
  keepStandardChannelsTaken();
  keepFreedMemory();
  ::signal(SIGPIPE, SIG_IGN);  // a reader that goes away is seen where it is written to
  DescriptorInput input(STDIN_FILENO);
  DescriptorChannel output(STDOUT_FILENO), errors(STDERR_FILENO);
  const std::vector<std::string> arguments(values + (count > 0 ? 1 : 0), values + count);
  return runCommandLine(arguments, {input, output, errors}, {variablesOf(environment), workingFolder()});
}
