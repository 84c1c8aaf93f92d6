#include "quorvane/removal/HistoryJson.h"

namespace quorvane {

namespace {

constexpr auto finishedName = "finished";
constexpr auto cancelledName = "cancelled";
constexpr auto notStartedName = "notStarted";
constexpr auto payloadName = "_0";

Json encoded(const administratorMove::Finished& state) { return {{finishedName, {{payloadName, state.status}}}}; }

Json encoded(const administratorMove::Cancelled&) { return {{cancelledName, Json::object()}}; }

Json encoded(const administratorMove::NotStarted&) { return {{notStartedName, Json::object()}}; }

Outcome<AdministratorMoveTerminalState, JsonError> finishedFromJson(const Json& payload) {
  const auto status = payload.find(payloadName);
  if (status == payload.end()) return failure(JsonError{JsonFault::missing, payloadName});
  const auto number = fromJson<std::uint8_t>(*status);
  if (!number) return failure(json::below(payloadName, number.error()));
  return administratorMove::Finished{*number};
}

}  // namespace

template <>
Json toJson(const AdministratorMoveTerminalState& state) {
  return std::visit([](const auto& each) { return encoded(each); }, state);
}

template <>
Outcome<AdministratorMoveTerminalState, JsonError> fromJson(const Json& json) {
  if (!json.is_object() || json.size() != 1 || !json.begin()->is_object()) return json::mistyped();
  const std::string& name = json.begin().key();
  if (name == cancelledName) return administratorMove::Cancelled{};
  if (name == notStartedName) return administratorMove::NotStarted{};
  if (name == finishedName) return finishedFromJson(*json.begin());
  return failure(JsonError{JsonFault::unknownCase, {}});
}

template <>
Outcome<CleaningHistoryItem, JsonError> fromJson(const Json& json) {
  auto item = json::recordFromJson<CleaningHistoryItem>(json);
  if (!item || isAbsolute(item->originalPath.bytes)) return item;
  const bool claimsToBeAFile = item->outcome == CleaningHistoryItemOutcome::movedToTrash || item->trashedPath ||
                               item->pendingCleanup || item->pendingRestorePath || item->restoredPath;
  if (claimsToBeAFile) return failure(JsonError{JsonFault::outOfRange, "originalPath"});
  return item;
}

template <>
Json toJson(const HistoryLocation& location) {
  return toJson<FilePath>(location);
}

template <>
Outcome<HistoryLocation, JsonError> fromJson(const Json& json) {
  if (json.is_string() && isForeignLocation(json.get_ref<const std::string&>()))
    return HistoryLocation(FilePath{json.get<std::string>()});
  auto path = fromJson<FilePath>(json);
  if (!path) return failure(path.error());
  return HistoryLocation(*std::move(path));
}

template <>
Json toJson(const DockerResourceKind& kind) {
  return static_cast<int>(kind);
}

template <>
Outcome<DockerResourceKind, JsonError> fromJson(const Json& json) {
  const auto number = fromJson<std::size_t>(json);
  if (!number) return failure(number.error());
  if (*number >= allDockerResourceKinds.size()) return failure(JsonError{JsonFault::unknownCase, {}});
  return allDockerResourceKinds[*number];
}

}  // namespace quorvane
