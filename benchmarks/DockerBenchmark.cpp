// What listing a Docker engine costs beside the client's own runs: DockerBenchmark, with an engine or without.
//
// With a client whose answers are prepared: what 2,000 images take to be read, and, when each of its runs takes the
// same time, how the whole listing compares with its longest chain of runs that need one another. With a real engine,
// which DOCKER_HOST or the client's context names: the same comparison with the runs of the real client. Medians count.
// Ends with 1 when a bound was missed, with 2 when something could not be done.

#include "quorvane/developer/DockerCommands.h"
#include "quorvane/developer/DockerEngine.h"
#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerPrograms.h"
#include "quorvane/developer/DockerService.h"
#include "quorvane/developer/SideBySide.h"
#include "quorvane/platform/SystemPlatform.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>

using namespace quorvane;

namespace {

constexpr int rounds = 11, imageCount = 2000;
constexpr unsigned runsSideBySide = 4;
constexpr double mostForReading = 50, mostOfChain = 1.1;

double millisecondsOf(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

double median(std::vector<double> values) {
  std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
  return values[values.size() / 2];
}

bool judged(const std::string& what, double value, double most, const char* unit) {
  const bool holds = value <= most;
  fmt::print("{}: {:.2f}{} (at most {}){}\n", what, value, unit, most, holds ? "" : " MISSED");
  return holds;
}

/// Answers after some time, instead of a client.
class PreparedRunner final : public ProcessRunner {
 public:
  PreparedRunner(std::chrono::milliseconds delay, int images) : delay_(delay) {
    for (int i = 0; i < images; ++i)
      images_ += fmt::format(
          R"({{"Containers":"N/A","CreatedAt":"2026-11-21 17:16:17 +0000 UTC","CreatedSince":"2 days ago",)"
          R"("Digest":"\u003cnone\u003e","ID":"sha256:{:064x}","Repository":"registry/team/service-{}","SharedSize":"N/A",)"
          R"("Size":"762MB","Tag":"1.{}","UniqueSize":"N/A","VirtualSize":"762.5MB"}})"
          "\n",
          i, i % 100, i);
  }

  Outcome<SafeProcessResult, PosixError> run(const ProcessRequest& request, StopToken) override {
    std::this_thread::sleep_for(delay_);
    SafeProcessResult result;
    const auto has = [&](std::string_view word) { return std::ranges::count(request.arguments, word) > 0; };
    if (has("show")) result.standardOutput = "default\n";
    if (has("context") && has("inspect")) result.standardOutput = "\"unix:///run/engine.sock\"\n";
    if (has("info")) result.standardOutput = "\"ID\"\n";
    if (has("image")) result.standardOutput = images_;
    return result;
  }

 private:
  const std::chrono::milliseconds delay_;
  std::string images_;
};

double surveyTime(const DockerClient& client) {
  const SystemClock clock;
  bool hasAnswered = false;
  const double time = millisecondsOf([&] { hasAnswered = DockerService(client, clock).survey({}).has_value(); });
  if (hasAnswered) return time;
  fmt::print(stderr, "DockerBenchmark: the listing failed\n");
  std::exit(2);
}

bool measureReading() {
  PreparedRunner runner(std::chrono::milliseconds(0), imageCount);
  const DockerClient client(runner, {});
  std::vector<double> times;
  for (int i = 0; i < rounds; ++i) times.push_back(surveyTime(client));
  return judged(fmt::format("{} images beyond the client", imageCount), median(times), mostForReading, " ms");
}

bool measureOrder() {
  constexpr std::chrono::milliseconds delay(40);
  constexpr int longestChain = 5;  // context, its address, the engine, then the two runs of the disk usage
  PreparedRunner runner(delay, 1);
  const DockerClient client(runner, {});
  std::vector<double> ratios;
  for (int i = 0; i < rounds; ++i) ratios.push_back(surveyTime(client) / (longestChain * double(delay.count())));
  return judged("whole listing, of the longest chain of equal runs", median(ratios), mostOfChain, "");
}

/// The real client's runs without us: what they take when each is made alone and the longest chain of them counts, or
/// when those that do not need each other go side by side.
class ClientRuns {
 public:
  ClientRuns(const DockerClient& client, const std::string& endpoint)
      : client_(client), engine_(client, endpoint, {}) {}

  double longestChain() {
    const double pinning = millisecondsOf([&] { pin(); });
    return pinning + std::max({millisecondsOf([&] { tables(); }), millisecondsOf([&] { containers(); }),
                               millisecondsOf([&] { images(); }), millisecondsOf([&] { volumes(); })});
  }

  double together() {
    return millisecondsOf([&] {
      pin();
      sideBySide([&] { containers(); }, [&] { tables(); }, [&] { images(); }, [&] { volumes(); });
    });
  }

 private:
  void pin() { (void)pinnedEngine(client_, {}); }
  void tables() {
    engine_.ask(DockerCommands::usageTables());
    engine_.ask(DockerCommands::usageSummary());
  }
  void containers() {
    const auto listed = dockerContainers(engine_.ask(DockerCommands::containers()).output);
    std::vector<std::string> identifiers;
    for (const auto& each : listed.records) identifiers.push_back(each.id);
    if (!identifiers.empty()) engine_.ask(DockerCommands::containerOrigins(identifiers));
  }
  void images() { engine_.ask(DockerCommands::images()); }
  void volumes() {
    const auto listed = dockerVolumes(engine_.ask(DockerCommands::volumes()).output);
    std::vector<std::string> names;
    for (const auto& each : listed.records) names.push_back(each.name);
    if (!names.empty()) engine_.ask(DockerCommands::volumeOrigins(names));
  }

  const DockerClient& client_;
  const DockerEngine engine_;
};

bool measureReal(char** environment) {
  const auto fileSystem = makeSystemFileSystem();
  const auto program = dockerProgram(*fileSystem, dockerPlaces(), systemUser());
  SafeProcessRunner runner;
  DockerClientSettings settings;
  settings.program = program.value_or(FilePath{"/nonexistent"});
  for (; *environment != nullptr; ++environment) {
    const std::string_view text(*environment);
    settings.environment.emplace(text.substr(0, text.find('=')),
                                 text.substr(std::min(text.find('=') + 1, text.size())));
  }
  const DockerClient client(runner, settings);
  const auto scope = pinnedEngine(client, {});
  if (!scope) {
    fmt::print("no Docker engine answers, so nothing is compared with the real client\n");
    return true;
  }
  ClientRuns runs(client, scope->endpoint);
  std::vector<double> ofTogether, ofChain;
  for (int i = 0; i < rounds; ++i) {
    const double ours = surveyTime(client);
    ofTogether.push_back(ours / runs.together());
    ofChain.push_back(ours / runs.longestChain());
  }
  const bool isFast =
      judged("whole listing, of the real client's runs side by side", median(ofTogether), mostOfChain, "");
  if (std::thread::hardware_concurrency() >= runsSideBySide)
    return judged("whole listing, of their longest chain alone", median(ofChain), mostOfChain, "") && isFast;
  fmt::print("whole listing, of their longest chain alone: {:.2f}, not judged: {} runs have to share {} cores\n",
             median(ofChain), runsSideBySide, std::thread::hardware_concurrency());
  return isFast;
}

}  // namespace

int main(int, char**, char** environment) {
  const bool isRead = measureReading(), isOrdered = measureOrder(), isFast = measureReal(environment);
  return isRead && isOrdered && isFast ? 0 : 1;
}
