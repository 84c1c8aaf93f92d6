#include "quorvane/developer/DockerService.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/developer/ContainerCounts.h"
#include "quorvane/developer/DockerCommands.h"
#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerUsage.h"
#include "quorvane/developer/DockerUsageTables.h"
#include "quorvane/developer/SideBySide.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

/// What the client printed of everything.
struct Answers {
  CommandResult summary, tables, images, containers, volumes;
  std::optional<ContainerCounts> counts;
};

/// Asks an engine for everything. An engine refuses to count its disk usage twice at a time, so those two runs go one
/// after the other.
Answers answersOf(const DockerEngine& engine) {
  Answers answers;
  sideBySide(
      [&] {
        answers.containers = engine.ask(DockerCommands::containers());
        if (answers.containers.hasSucceeded())
          answers.counts = containersByImage(engine, dockerContainers(answers.containers.output));
      },
      [&] {
        answers.tables = engine.ask(DockerCommands::usageTables());
        answers.summary = engine.ask(DockerCommands::usageSummary());
      },
      [&] { answers.images = engine.ask(DockerCommands::images()); },
      [&] { answers.volumes = engine.ask(DockerCommands::volumes()); });
  return answers;
}

void addUsage(std::vector<DockerVolumeRecord>& volumes, const DockerUsageTables& tables) {
  for (DockerVolumeRecord& volume : volumes) {
    const auto usage = tables.volumes.find(volume.name);
    if (usage == tables.volumes.end()) continue;
    volume.referenceCount = usage->second.referenceCount;
    volume.sizeBytes = usage->second.sizeBytes;
  }
}

/// Makes a survey of what the client printed.
class SurveyReader {
 public:
  explicit SurveyReader(const Answers& answers) : answers_(answers) {}

  DockerSurvey read() {
    DockerSnapshot& snapshot = survey_.snapshot;
    snapshot.images = taken(dockerImages(answers_.images.output), DockerResourceKind::images);
    snapshot.containers = taken(dockerContainers(answers_.containers.output), DockerResourceKind::containers);
    snapshot.volumes = taken(dockerVolumes(answers_.volumes.output), DockerResourceKind::volumes);
    countContainers();
    readTables();
    snapshot.runningContainerCount =
        std::ranges::count(snapshot.containers, "running", [](const auto& each) { return asciiLowered(each.state); });
    const auto summary =
        answers_.summary.hasSucceeded() ? dockerUsageLines(answers_.summary.output) : DockerListing<DockerUsageLine>();
    snapshot.usages = usagesOf(snapshot, summary.records);
    return std::move(survey_);
  }

 private:
  template <class Record>
  std::vector<Record> taken(DockerListing<Record> listing, DockerResourceKind kind) {
    note("docker.notice.undecoded", kind, listing.undecodedCount);
    return std::move(listing.records);
  }

  void note(const char* key, DockerResourceKind kind, std::int64_t count) {
    if (count > 0) survey_.notices.push_back({key, kind, count});
  }

  void countContainers() {
    std::vector<DockerImageRecord>& images = survey_.snapshot.images;
    if (!answers_.counts)
      return note("docker.notice.containersUnknown", DockerResourceKind::images, std::ssize(images));
    for (DockerImageRecord& image : images) {
      const auto count = answers_.counts->find(image.id);
      image.containerCount = count == answers_.counts->end() ? 0 : count->second;
    }
  }

  void readTables() {
    const auto tables =
        answers_.tables.hasSucceeded() ? dockerUsageTables(answers_.tables.output) : DockerUsageTables();
    DockerSnapshot& snapshot = survey_.snapshot;
    if (!tables.hasVolumes)
      note("docker.notice.usageUnknown", DockerResourceKind::volumes, std::ssize(snapshot.volumes));
    if (!tables.hasBuildCache) note("docker.notice.notListed", DockerResourceKind::buildCache, 1);
    note("docker.notice.undecoded", DockerResourceKind::volumes, tables.undecodedVolumeCount);
    addUsage(snapshot.volumes, tables);
    snapshot.buildCaches = taken(tables.buildCaches, DockerResourceKind::buildCache);
  }

  const Answers& answers_;
  DockerSurvey survey_;
};

std::optional<DockerServiceError> errorOf(const Answers& answers) {
  for (const CommandResult* listing : {&answers.images, &answers.containers, &answers.volumes})
    if (!listing->hasSucceeded()) return commandFailed(*listing);
  return std::nullopt;
}

}  // namespace

Outcome<DockerSurvey, DockerServiceError> DockerService::survey(const StopToken& stop) const {
  auto scope = pinnedEngine(client_, stop);
  const DockerEngine engine = scope ? DockerEngine(client_, scope->endpoint, stop) : DockerEngine(client_, stop);
  if (!scope) {
    const CommandResult answer = engine.ask(DockerCommands::engineID());
    if (!answer.hasSucceeded())
      return failure(DockerServiceError{DockerServiceFault::engineUnavailable, commandFailed(answer).message});
  }
  return surveyOf(engine, std::move(scope));
}

Outcome<DockerSurvey, DockerServiceError> DockerService::surveyAt(const DockerCleanupScope& scope,
                                                                  const StopToken& stop) const {
  const DockerEngine engine(client_, scope.endpoint, stop);
  auto identifier = engine.identifier();
  if (!identifier) return failure(DockerServiceError{DockerServiceFault::engineUnavailable});
  return surveyOf(engine, DockerCleanupScope{scope.context, scope.endpoint, *std::move(identifier)});
}

Outcome<DockerSurvey, DockerServiceError> DockerService::surveyOf(const DockerEngine& engine,
                                                                  std::optional<DockerCleanupScope> scope) const {
  const Answers answers = answersOf(engine);
  if (auto error = errorOf(answers)) return failure(*std::move(error));
  DockerSurvey survey = SurveyReader(answers).read();
  survey.snapshot.checkedAt = wholeSeconds(clock_.now());
  survey.snapshot.contextName = scope ? scope->context : std::string();
  survey.snapshot.cleanupScope = std::move(scope);
  return survey;
}

std::optional<std::vector<DockerVolumeRecord>> volumesOf(const DockerEngine& engine) {
  CommandResult listed, tables;
  sideBySide([&] { listed = engine.ask(DockerCommands::volumes()); },
             [&] { tables = engine.ask(DockerCommands::usageTables()); });
  if (!listed.hasSucceeded() || !tables.hasSucceeded()) return std::nullopt;
  std::vector<DockerVolumeRecord> volumes = dockerVolumes(listed.output).records;
  addUsage(volumes, dockerUsageTables(tables.output));
  return volumes;
}

std::optional<std::vector<DockerBuildCacheRecord>> buildCachesOf(const DockerEngine& engine) {
  const CommandResult answer = engine.ask(DockerCommands::usageTables());
  auto tables = dockerUsageTables(answer.output);
  if (!answer.hasSucceeded() || !tables.hasBuildCache || !tables.buildCaches.isComplete()) return std::nullopt;
  return std::move(tables.buildCaches.records);
}

}  // namespace quorvane
