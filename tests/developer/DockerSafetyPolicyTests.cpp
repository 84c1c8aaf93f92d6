#include "quorvane/developer/DockerSafetyPolicy.h"

#include "quorvane/developer/DockerNames.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane {
namespace {

using Safety = DockerCleanupSafety;

DockerImageRecord image(const char* repository, const char* tag, std::int64_t containers) {
  return {.id = "sha256:" + std::string(64, 'a'), .repository = repository, .tag = tag, .containerCount = containers};
}

DockerVolumeRecord volume(std::optional<std::int64_t> references, const char* labels = "") {
  return {.name = "data", .referenceCount = references, .labels = labels};
}

TEST(DockerSafetyPolicyTests, judgesImages) {
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(image("tiny", "1", 0)), Safety::review);
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(image("<none>", "<none>", 0)), Safety::safe);
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(image("tiny", "<none>", 0)), Safety::safe);
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(image("<none>", "<none>", 1)), Safety::protected_);
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(image("<none>", "<none>", DockerImageRecord::unknownCount)),
            Safety::protected_);
}

TEST(DockerSafetyPolicyTests, judgesContainersByTheirState) {
  for (const char* state : {"exited", "created", "dead", "Exited"})
    EXPECT_EQ(DockerSafetyPolicy::safetyOf(DockerContainerRecord{.state = state}), Safety::review) << state;
  for (const char* state : {"running", "paused", "restarting", "removing", ""})
    EXPECT_EQ(DockerSafetyPolicy::safetyOf(DockerContainerRecord{.state = state}), Safety::protected_) << state;
  EXPECT_EQ(DockerSafetyPolicy::stateKey("Paused"), "docker.container.state.paused");
  EXPECT_EQ(DockerSafetyPolicy::stateKey("removing"), "docker.container.state.other");
}

TEST(DockerSafetyPolicyTests, judgesVolumesByTheirUseAndTheirLabel) {
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(volume(0)), Safety::review);
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(volume(1)), Safety::protected_);
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(volume(std::nullopt)), Safety::protected_);
  for (const char* labels : {"quorvane.keep=true", "quorvane.keep", "quorvane.keep=", "a=b,quorvane.keep=1",
                             "Quorvane.Keep=x", "quorvane.keep=false,quorvane.keep=yes", "quorvane.keep=off"})
    EXPECT_EQ(DockerSafetyPolicy::safetyOf(volume(0, labels)), Safety::protected_) << labels;
  for (const char* labels : {"quorvane.keep=false", "quorvane.keep=No", "quorvane.keep=0", "a=quorvane.keep",
                             "quorvane.keeper=true", "keep=true"})
    EXPECT_EQ(DockerSafetyPolicy::safetyOf(volume(0, labels)), Safety::review) << labels;
}

TEST(DockerSafetyPolicyTests, judgesBuildCacheByWhetherItIsShared) {
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(DockerBuildCacheRecord{.isShared = true}), Safety::protected_);
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(DockerBuildCacheRecord{.isInUse = true}), Safety::protected_);
  EXPECT_EQ(DockerSafetyPolicy::safetyOf(DockerBuildCacheRecord{.isShared = false}), Safety::safe);
}

TEST(DockerSafetyPolicyTests, knowsNames) {
  for (const char* name : {"data", "a", "0_.-", "shop_db.1"}) EXPECT_TRUE(isVolumeName(name)) << name;
  for (const char* name : {"", ".data", "-f", "_x", "a b", "a/b", "a\n", "\xc3\xa9"})
    EXPECT_FALSE(isVolumeName(name)) << name;
  EXPECT_EQ(shortID("sha256:0123456789abcdef"), "0123456789ab");
  EXPECT_EQ(displayNameOf(image("tiny", "1", 0)), "tiny:1");
  EXPECT_EQ(displayNameOf(image("tiny", "<none>", 0)), std::string(12, 'a'));
  EXPECT_TRUE(isAnonymous({.name = std::string(64, 'F')}));
  EXPECT_TRUE(isAnonymous({.name = "x", .labels = "com.docker.volume.anonymous="}));
  EXPECT_FALSE(isAnonymous({.name = std::string(63, 'f')}));
  EXPECT_EQ(composeProjectOf("com.docker.compose.project=shop,x=y"), "shop");
  EXPECT_EQ(composeProjectOf("com.docker.compose.project.x=shop"), std::nullopt);
}

}  // namespace
}  // namespace quorvane
