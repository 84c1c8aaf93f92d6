#include "quorvane/developer/DockerService.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/developer/DockerCommands.h"
#include "quorvane/developer/DockerContexts.h"
#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerOrigins.h"
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
  DockerOrigins<DockerContainerOrigin> containerOrigins;
  DockerOrigins<DockerVolumeOrigin> volumeOrigins;
};

template <class Record>
std::vector<std::string> each(const std::vector<Record>& records, std::string Record::*member) {
  std::vector<std::string> texts;
  texts.reserve(records.size());
  for (const Record& record : records) texts.push_back(record.*member);
  return texts;
}

/// Asks an engine for everything. An engine refuses to count its disk usage twice at a time, so those two runs go one
/// after the other.
Answers answersOf(const DockerEngine& engine) {
  Answers answers;
  sideBySide(
      [&] {
        answers.containers = engine.ask(DockerCommands::containers());
        answers.containerOrigins = containerOrigins(
            engine, each(dockerContainers(answers.containers.output).records, &DockerContainerRecord::id));
      },
      [&] {
        answers.tables = engine.ask(DockerCommands::usageTables());
        answers.summary = engine.ask(DockerCommands::usageSummary());
      },
      [&] { answers.images = engine.ask(DockerCommands::images()); },
      [&] {
        answers.volumes = engine.ask(DockerCommands::volumes());
        answers.volumeOrigins =
            volumeOrigins(engine, each(dockerVolumes(answers.volumes.output).records, &DockerVolumeRecord::name));
      });
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

void addCreations(std::vector<DockerVolumeRecord>& volumes, const DockerOrigins<DockerVolumeOrigin>& origins) {
  for (DockerVolumeRecord& volume : volumes) {
    const auto origin = origins.find(volume.name);
    if (origin != origins.end() && !origin->second.createdAt.empty()) volume.createdAt = origin->second.createdAt;
  }
}

/// Makes a survey of what the client printed.
class SurveyReader {
 public:
  explicit SurveyReader(const Answers& answers) : answers_(answers) {}

  DockerSurvey read() {
    DockerSnapshot& snapshot = survey_.snapshot;
    snapshot.images = taken(dockerImages(answers_.images.output), DockerResourceKind::images);
    readContainers();
    snapshot.volumes = taken(dockerVolumes(answers_.volumes.output), DockerResourceKind::volumes);
    addCreations(snapshot.volumes, answers_.volumeOrigins);
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

  /// Where it is not certain of a single container what it was made from, no image counts as unused.
  void readContainers() {
    auto listing = dockerContainers(answers_.containers.output);
    std::map<std::string_view, std::int64_t> countsByImage;
    bool isCertain = listing.isComplete();
    for (DockerContainerRecord& container : listing.records) {
      const auto origin = answers_.containerOrigins.find(container.id);
      const bool isKnown = origin != answers_.containerOrigins.end() && isFullImageID(origin->second.imageID);
      isCertain = isCertain && isKnown;
      if (!isKnown) continue;
      ++countsByImage[origin->second.imageID];
      container.startedAt = origin->second.startedAt;
    }
    survey_.snapshot.containers = taken(std::move(listing), DockerResourceKind::containers);
    std::vector<DockerImageRecord>& images = survey_.snapshot.images;
    if (!isCertain) return note("docker.notice.containersUnknown", DockerResourceKind::images, std::ssize(images));
    for (DockerImageRecord& image : images) image.containerCount = countsByImage[image.id];
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

DockerServiceError unavailable(const CommandResult& answer) {
  return {DockerServiceFault::engineUnavailable, commandFailed(answer).message};
}

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
    if (!answer.hasSucceeded()) return failure(unavailable(answer));
  }
  return surveyOf(engine, std::move(scope));
}

Outcome<DockerSurvey, DockerServiceError> DockerService::surveyAt(const DockerCleanupScope& scope,
                                                                  const StopToken& stop) const {
  const DockerEngine engine(client_, scope.endpoint, stop);
  const CommandResult answer = engine.ask(DockerCommands::engineID());
  auto identifier = answer.hasSucceeded() ? onlyText(answer.output) : std::nullopt;
  if (!identifier) return failure(unavailable(answer));
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

std::optional<std::vector<DockerVolumeRecord>> listedVolumes(const DockerEngine& engine) {
  const CommandResult answer = engine.ask(DockerCommands::volumes());
  auto listing = dockerVolumes(answer.output);
  if (!answer.hasSucceeded() || !listing.isComplete()) return std::nullopt;
  return std::move(listing.records);
}

std::optional<std::vector<DockerVolumeRecord>> volumesOf(const DockerEngine& engine) {
  std::optional<std::vector<DockerVolumeRecord>> volumes;
  CommandResult tables;
  sideBySide([&] { volumes = listedVolumes(engine); }, [&] { tables = engine.ask(DockerCommands::usageTables()); });
  if (!volumes || !tables.hasSucceeded()) return std::nullopt;
  addUsage(*volumes, dockerUsageTables(tables.output));
  return volumes;
}

std::optional<std::vector<DockerBuildCacheRecord>> buildCachesOf(const DockerEngine& engine) {
  const CommandResult answer = engine.ask(DockerCommands::usageTables());
  auto tables = dockerUsageTables(answer.output);
  if (!answer.hasSucceeded() || !tables.hasBuildCache || !tables.buildCaches.isComplete()) return std::nullopt;
  return std::move(tables.buildCaches.records);
}

}  // namespace quorvane
