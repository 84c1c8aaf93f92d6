#include "quorvane/developer/DockerCommands.h"

#include "quorvane/base/Assert.h"

namespace quorvane::DockerCommands {

namespace {

constexpr const char* eachAsJson = "{{json .}}";

std::string wordOf(DockerResourceKind kind) {
  switch (kind) {
    case DockerResourceKind::images: return "image";
    case DockerResourceKind::containers: return "container";
    case DockerResourceKind::volumes: return "volume";
    case DockerResourceKind::buildCache: break;
  }
  abortOnBrokenInvariant("the build cache has no objects that a command names", std::source_location::current());
}

Arguments inspectionOf(DockerResourceKind kind, const char* line, Names objects) {
  Arguments arguments{wordOf(kind), "inspect", "--format", line};
  arguments.insert(arguments.end(), objects.begin(), objects.end());
  return arguments;
}

}  // namespace

Arguments showContext() { return {"context", "show"}; }
Arguments listContexts() { return {"context", "ls", "--format", eachAsJson}; }
Arguments endpointOf(const std::string& context) {
  return {"context", "inspect", context, "--format", "{{json .Endpoints.docker.Host}}"};
}
Arguments engineID() { return {"info", "--format", "{{json .ID}}"}; }

Arguments usageSummary() { return {"system", "df", "--format", eachAsJson}; }
Arguments usageTables() { return {"system", "df", "--verbose"}; }
Arguments images() { return {"image", "ls", "--all", "--no-trunc", "--format", eachAsJson}; }
Arguments containers() { return {"container", "ls", "--all", "--no-trunc", "--size", "--format", eachAsJson}; }
Arguments volumes() { return {"volume", "ls", "--format", eachAsJson}; }

Arguments containerOrigins(Names containerIDs) {
  return inspectionOf(DockerResourceKind::containers,
                      R"({"id":{{json .Id}},"name":{{json .Name}},"imageID":{{json .Image}},)"
                      R"("startedAt":{{json .State.StartedAt}}})",
                      containerIDs);
}
Arguments volumeOrigins(Names volumes) {
  return inspectionOf(DockerResourceKind::volumes, R"({"name":{{json .Name}},"createdAt":{{json .CreatedAt}}})",
                      volumes);
}
Arguments imageOrigins(Names imageIDs) {
  return inspectionOf(DockerResourceKind::images, R"({"id":{{json .Id}},"parentID":{{json .Parent}}})", imageIDs);
}

Arguments identityOf(DockerResourceKind kind, const std::string& id) {
  return {wordOf(kind), "inspect", "--format", "{{json .Id}}", id};
}
Arguments identities(DockerResourceKind kind) {
  return {wordOf(kind), "ls", "--all", "--no-trunc", "--format", "{{json .ID}}"};
}
Arguments stateOf(const std::string& containerID) {
  return {"container", "inspect", "--format", "{{json .State.Status}}", containerID};
}
Arguments tagsOf(const std::string& imageID) { return {"image", "inspect", "--format", "{{json .RepoTags}}", imageID}; }
Arguments containersOf(const std::string& imageID) {
  return {"container", "ls", "--all", "--quiet", "--filter", "ancestor=" + imageID};
}

Arguments removalOf(DockerResourceKind kind, const std::string& target) {
  if (kind == DockerResourceKind::images) return {"image", "rm", "--no-prune", target};
  return {wordOf(kind), "rm", target};
}
Arguments pruneBuildCache() { return {"builder", "prune", "--force"}; }

}  // namespace quorvane::DockerCommands
