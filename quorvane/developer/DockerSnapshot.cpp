#include "quorvane/developer/DockerSnapshot.h"

#include "quorvane/developer/DockerSafetyPolicy.h"
#include "quorvane/removal/HistoryJson.h"

namespace quorvane {

namespace {

template <class Record>
Json judgedJson(const std::vector<Record>& records) {
  Json list = Json::array();
  for (const Record& record : records) {
    Json json = toJson(record);
    json["safety"] = toJson(DockerSafetyPolicy::safetyOf(record));
    list.push_back(std::move(json));
  }
  return list;
}

}  // namespace

std::string jsonText(const DockerSurvey& survey) {
  const DockerSnapshot& snapshot = survey.snapshot;
  Json json{{"checkedAt", toJson(snapshot.checkedAt)},
            {"contextName", toJson(snapshot.contextName)},
            {"usages", toJson(snapshot.usages)},
            {"images", judgedJson(snapshot.images)},
            {"containers", judgedJson(snapshot.containers)},
            {"volumes", judgedJson(snapshot.volumes)},
            {"buildCaches", judgedJson(snapshot.buildCaches)},
            {"runningContainerCount", snapshot.runningContainerCount}};
  if (snapshot.cleanupScope) json["cleanupScope"] = toJson(*snapshot.cleanupScope);
  if (!survey.notices.empty()) json["notices"] = toJson(survey.notices);
  return printedJson(json);
}

Outcome<DockerSnapshot, JsonError> dockerSnapshotFromJson(std::string_view text) {
  return recordFromText<DockerSnapshot>(text);
}

}  // namespace quorvane
