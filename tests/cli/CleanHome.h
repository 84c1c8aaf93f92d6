#pragma once

#include "quorvane/base/Json.h"
#include "tests/cli/CommandLineRun.h"
#include "tests/support/ScanHome.h"

#include <gtest/gtest.h>

#include <chrono>
#include <initializer_list>
#include <string>
#include <vector>

namespace quorvane {

/// A home with caches that are old enough to be cleaned, and the program run on it.
class CleanHome {
 public:
  CleanHome() {
    for (const char* name : {"mesa_shader_cache", "thumbnails", "unknown", "bitwarden"}) addCache(name);
  }

  void addCache(const std::string& name) {
    home_.write(".cache/" + name + "/file", "content");
    home_.age(".cache/" + name, std::chrono::hours(48));
  }

  CommandLineRun run(std::vector<std::string> arguments, const CommandLineRun::Setting& setting = {}) const {
    arguments.insert(arguments.end(), {"--home", folder().path().bytes});
    return CommandLineRun(arguments, setting);
  }

  /// The same with a terminal, where these answers are given.
  CommandLineRun answered(std::vector<std::string> arguments, std::vector<std::string> answers) const {
    return run(std::move(arguments),
               {.errors = {.isTerminal = true}, .input = {.isTerminal = true, .lines = std::move(answers)}});
  }

  Json json(std::vector<std::string> arguments, int expectedCode = 0) const {
    arguments.emplace_back("--json");
    const CommandLineRun done = run(std::move(arguments));
    EXPECT_EQ(done.code, expectedCode) << done.errors;
    const auto document = parsedJson(done.output);
    EXPECT_TRUE(document.has_value()) << done.output;
    return document.value_or(Json());
  }

  const TempFolder& folder() const { return home_.folder; }
  std::string at(std::string_view relative) const { return home_.at(relative).bytes; }
  bool hasCache(const std::string& name) const { return folder().holds(".cache/" + name + "/file"); }

  /// The caches that are still there.
  std::vector<std::string> caches() const {
    std::vector<std::string> left;
    for (const char* name : {"bitwarden", "mesa_shader_cache", "thumbnails", "unknown"})
      if (hasCache(name)) left.emplace_back(name);
    return left;
  }

 private:
  ScanHome home_{HomeLayout::linux};
};

}  // namespace quorvane
