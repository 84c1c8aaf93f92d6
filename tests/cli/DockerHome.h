#pragma once

#include "quorvane/base/Json.h"
#include "tests/cli/CommandLineRun.h"
#include "tests/support/TempFolder.h"

#include <filesystem>
#include <string>
#include <vector>

namespace quorvane {

/// A home, and a Docker client for the program that is run on it: a script, or a real one.
class DockerHome {
 public:
  CommandLineRun run(std::vector<std::string> arguments, CommandLineRun::Setting setting = {}) const {
    arguments.insert(arguments.end(), {"--home", folder_.path().bytes});
    setting.variables.try_emplace("PATH", "/usr/bin:/bin");
    return CommandLineRun(arguments, setting);
  }

  /// With a client that does what this script says.
  CommandLineRun scripted(std::vector<std::string> arguments, const std::string& script,
                          CommandLineRun::Setting setting = {}) const {
    folder_.write("docker", "#!/bin/sh\n" + script);
    std::filesystem::permissions(at("docker").bytes, std::filesystem::perms(0755));
    setting.dockerPlaces = {at("docker")};
    return run(std::move(arguments), std::move(setting));
  }

  /// The path of a file with this content.
  std::string keep(const std::string& name, const std::string& content) const {
    folder_.write(name, content);
    return at(name).bytes;
  }

  FilePath at(std::string_view relative) const { return folder_.at(relative); }

  /// A client whose engine has an image, a container of another image, and a line that is garbage.
  static std::string engineScript(const std::string& repository, const std::string& container) {
    const std::string image(64, 'a'), other(64, 'b'), id(64, 'c');
    return R"x(say() { printf "%s\n" "$1"; }
[ "$1" = --host ] && shift 2
case "$1 $2" in
  "context show") say default ;;
  "context inspect") say '"unix:///run/a.sock"' ;;
  "info --format") say '"ID-1"' ;;
  "system df") say garbage ;;
  "volume ls") ;;
  "image ls") say '{"ID":"sha256:)x" +
           image + R"x(","Repository":")x" + repository +
           R"x(","Tag":"1","CreatedSince":"now","Size":"1kB"}'; say garbage ;;
  "container ls") say '{"ID":")x" +
           id + R"x(","Names":")x" + container +
           R"x(","Image":"i","State":"exited","Status":"s","RunningFor":"now","Size":"0B","Labels":""}' ;;
  "container inspect") say '{"id":")x" +
           id + R"x(","name":"/c","imageID":"sha256:)x" + other + R"x(","startedAt":"once"}' ;;
  *) say "unexpected: $*" >&2; exit 1 ;;
esac
)x";
  }

 private:
  TempFolder folder_;
};

}  // namespace quorvane
