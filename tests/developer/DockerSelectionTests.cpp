#include "quorvane/developer/DockerSelection.h"

#include "quorvane/developer/DockerRemovalOrder.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

using Kind = DockerResourceKind;

const std::string used = "sha256:" + std::string(64, 'a'), unused = "sha256:" + std::string(64, 'b');
const std::string dangling = "sha256:" + std::string(64, 'c'), stranger = "sha256:" + std::string(64, 'd');
const std::string ended(64, 'e'), running(64, 'f');

DockerSnapshot snapshot() {
  DockerSnapshot made;
  made.cleanupScope = DockerCleanupScope{"default", "unix:///run/a.sock", "ID-1"};
  const auto image = [](const std::string& id, const char* repository, const char* tag, std::int64_t containers) {
    return DockerImageRecord{id, repository, tag, "now", 100, containers};
  };
  made.images = {image(used, "used", "1", 1), image(unused, "new", "2", 0), image(unused, "new", "1", 0),
                 image(dangling, "<none>", "<none>", 0)};
  made.containers = {{.id = ended, .name = "ended", .state = "exited", .startedAt = "once"},
                     {.id = running, .name = "on", .state = "running"}};
  made.volumes = {{.name = "idle", .sizeBytes = 5, .referenceCount = 0, .createdAt = "then"},
                  {.name = "busy", .referenceCount = 1},
                  {.name = ".data", .referenceCount = 0}};
  made.buildCaches = {{.id = "x", .type = "regular", .sizeBytes = 7, .isShared = false}, {.id = "y", .isShared = true}};
  return made;
}

DockerReview review(const std::vector<DockerSelector>& named, const DockerSnapshot& reviewed,
                    const DockerSnapshot& now) {
  const auto outcome = reviewOf({.named = named}, reviewed, now);
  EXPECT_TRUE(outcome.has_value());
  return outcome.value_or(DockerReview{});
}

TEST(DockerSelectionTests, readsSelectors) {
  EXPECT_EQ(dockerSelectorFrom("image:" + used), (DockerSelector{Kind::images, used}));
  EXPECT_EQ(dockerSelectorFrom("container:" + ended), (DockerSelector{Kind::containers, ended}));
  EXPECT_EQ(dockerSelectorFrom("volume:.data"), (DockerSelector{Kind::volumes, ".data"}));
  for (const std::string& text :
       {std::string("image"), std::string("image:"), std::string("image:new:1"), "image:" + used.substr(0, 19),
        "container:" + used, "buildCache:" + ended, std::string()})
    EXPECT_EQ(dockerSelectorFrom(text), std::nullopt) << text;
}

TEST(DockerSelectionTests, plansExactlyWhatWasNamedAsItWasReviewed) {
  const DockerReview planned =
      review({{Kind::images, unused}, {Kind::volumes, "idle"}, {Kind::images, unused}, {Kind::containers, ended}},
             snapshot(), snapshot());
  EXPECT_TRUE(planned.plan.refused.empty());
  ASSERT_EQ(planned.plan.targets.size(), 3U);
  const DockerRetryTarget& image = planned.plan.targets[0];
  EXPECT_EQ(image.target, (DockerCleanupTarget{unused, "new:2, new:1", "docker://images/" + unused, 100}));
  EXPECT_EQ(image.reviewedTags, (std::vector<std::string>{"new:1", "new:2"}));
  EXPECT_EQ(image.scope, snapshot().cleanupScope);
  EXPECT_EQ(planned.plan.targets[1].target.historyLocation, "docker://volumes/idle");
  EXPECT_EQ(planned.plan.targets[1].createdAt, "then");
  EXPECT_EQ(planned.plan.targets[2].startedAt, "once");
  EXPECT_FALSE(planned.plan.prune.has_value());
}

TEST(DockerSelectionTests, refusesWhatIsProtectedUnknownOrOfAnotherEngine) {
  const auto reasonOf = [](const DockerSelector& selector, const DockerSnapshot& now) {
    const DockerReview refused = review({selector}, snapshot(), now);
    EXPECT_TRUE(refused.plan.removesNothing()) << selector.id;
    return refused.plan.refused.empty() ? std::string() : refused.plan.refused[0].refusal.reasonKey;
  };
  const DockerSnapshot now = snapshot();
  DockerSnapshot twice = now;
  twice.volumes.push_back(twice.volumes[0]);
  EXPECT_EQ(reasonOf({Kind::volumes, "idle"}, twice), "docker.failure.protected") << "which of the two?";
  for (const DockerSelector& selector :
       {DockerSelector{Kind::images, used}, {Kind::containers, running}, {Kind::volumes, "busy"}})
    EXPECT_EQ(reasonOf(selector, now), "docker.failure.protected") << selector.id;
  EXPECT_EQ(reasonOf({Kind::images, stranger}, now), "docker.failure.unknownObject");
  EXPECT_EQ(reasonOf({Kind::volumes, ".data"}, now), "docker.failure.invalidName");
  DockerSnapshot other = snapshot();
  other.cleanupScope->engineID = "ID-2";
  EXPECT_EQ(reasonOf({Kind::images, unused}, other), "docker.failure.engineChanged");
}

TEST(DockerSelectionTests, believesNoVerdictOfAReviewThatWasKept) {
  DockerSnapshot kept = snapshot();
  for (DockerImageRecord& image : kept.images) image.containerCount = 0;
  for (DockerVolumeRecord& volume : kept.volumes) volume.referenceCount = 0;
  kept.images[0].repository = "<none>";
  kept.volumes[0].sizeBytes = 3;
  kept.volumes[0].createdAt = "before";
  EXPECT_EQ(review({{Kind::volumes, "busy"}}, kept, snapshot()).plan.refused.at(0).refusal.reasonKey,
            "docker.failure.protected");
  const DockerRetryTarget idle = review({{Kind::volumes, "idle"}}, kept, snapshot()).plan.targets.at(0);
  EXPECT_EQ(idle.target.sizeBytes, 3) << "the one that was seen";
  EXPECT_EQ(idle.createdAt, "before") << "the one that was seen";
  const auto safe = reviewOf({.takesSafe = true}, kept, snapshot());
  ASSERT_TRUE(safe.has_value());
  ASSERT_EQ(safe->plan.targets.size(), 1U);
  EXPECT_EQ(safe->plan.targets[0].target.commandTarget, dangling);

  DockerSnapshot asUsed = snapshot();
  asUsed.images.back().containerCount = 1;
  const auto notSafeThen = reviewOf({.takesSafe = true}, asUsed, snapshot());
  EXPECT_TRUE(notSafeThen && notSafeThen->plan.isEmpty()) << "nobody saw it as safe";
  DockerSnapshot renamed = snapshot();
  renamed.containers[0].name = "precious";
  EXPECT_EQ(review({{Kind::containers, ended}}, snapshot(), renamed).plan.refused.at(0).refusal.reasonKey,
            "docker.failure.renamed");

  kept.images.pop_back();
  const auto unseen = reviewOf({.named = {{Kind::images, dangling}}}, kept, snapshot());
  ASSERT_FALSE(unseen.has_value()) << "the engine holds it, but nobody reviewed it";
  EXPECT_EQ(unseen.error().id, dangling);
}

TEST(DockerSelectionTests, takesSafeImagesBeforeThoseThatTheyWereBuiltOn) {
  const auto id = [](char digit) { return "sha256:" + std::string(64, digit); };
  const auto order = [&](const std::string& images, const std::vector<std::string>& childAndParent) {
    std::vector<std::string> identifiers;
    for (const char each : images) identifiers.push_back(id(each));
    DockerOrigins<DockerImageOrigin> origins;
    for (const std::string& each : childAndParent) origins[id(each[0])] = {id(each[0]), id(each[1])};
    std::string text;
    for (const std::string& each : removalOrderOf(identifiers, origins).removable) text += each.back();
    return text;
  };
  EXPECT_EQ(order("123", {}), "123");
  EXPECT_EQ(order("123", {"21", "32"}), "321");
  EXPECT_EQ(order("123", {"21", "31"}), "231");
  EXPECT_EQ(order("123", {"21", "42"}), "3") << "another one stays that was built on them";
  EXPECT_EQ(order("123", {"12", "21"}), "3") << "an engine may say anything";
}

TEST(DockerSelectionTests, plansOnePruneOfTheBuildCache) {
  const auto planned = reviewOf({.prunesBuildCache = true}, snapshot(), snapshot());
  ASSERT_TRUE(planned && planned->plan.prune);
  EXPECT_TRUE(planned->plan.targets.empty());
  const std::vector<DockerCleanupTarget> unshared{{"x", "regular", "docker://builder/prune", 7}};
  EXPECT_EQ(planned->plan.prune->reviewedTargets, unshared);
  DockerSnapshot later = snapshot();
  later.buildCaches.push_back({.id = "z", .type = "regular", .sizeBytes = 9});
  const auto kept = reviewOf({.prunesBuildCache = true}, snapshot(), later);
  ASSERT_TRUE(kept && kept->plan.prune);
  EXPECT_EQ(kept->plan.prune->reviewedTargets, unshared) << "what came later was not reviewed";
  later.cleanupScope->engineID = "ID-2";
  const auto elsewhere = reviewOf({.prunesBuildCache = true}, snapshot(), later);
  ASSERT_TRUE(elsewhere && elsewhere->plan.removesNothing());
  EXPECT_EQ(elsewhere->plan.refused.at(0).refusal.reasonKey, "docker.failure.engineChanged");
}

}  // namespace
}  // namespace quorvane
