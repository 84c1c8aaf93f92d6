#include "quorvane/developer/DockerService.h"

#include "quorvane/developer/DockerPrograms.h"
#include "quorvane/developer/DockerSafetyPolicy.h"
#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/DockerRunners.h"
#include "tests/support/TestDockerEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include <unistd.h>

namespace quorvane {
namespace {

using Safety = DockerCleanupSafety;

const std::string imageA = "sha256:" + std::string(64, 'a'), imageB = "sha256:" + std::string(64, 'b');
const std::string containerID(64, 'c');

/// What a client prints that is asked for everything, until a test changes one of the answers.
class DockerServiceTests : public testing::Test {
 protected:
  DockerServiceTests() {
    answers_ = {{"info", printed("\"ID-1\"")},
                {"context show", printed("default\n")},
                {"context inspect", printed("\"unix:///run/a.sock\"")},
                {"system df --format", printed(R"({"Type":"Images","Active":"1","Size":"1MB","TotalCount":"2"})")},
                {"system df --verbose", printed("Local Volumes space usage:\n\nVOLUME NAME   LINKS   SIZE\n"
                                                "idle          0       5MB\nbusy          1       6MB\n")},
                {"image ls", printed(imageLine(imageA) + imageLine(imageB))},
                {"container ls", printed(containerLine(containerID))},
                {"container inspect", printed(originLine(containerID, imageA))},
                {"volume inspect", printed("{\"name\":\"idle\",\"createdAt\":\"then\"}\n")},
                {"volume ls", printed(volumeLine("idle") + volumeLine("busy") + volumeLine("absent"))}};
    runner_.answers = [this](const Words& arguments) -> std::optional<SafeProcessResult> {
      std::string command;
      for (const std::string& word : arguments) {
        command += (command.empty() ? "" : " ") + word;
        if (const auto found = answers_.find(command); found != answers_.end()) return found->second;
      }
      return failed("unexpected: " + command);
    };
  }

  static std::string imageLine(const std::string& id) {
    return R"({"ID":")" + id +
           R"(","Repository":"r","Tag":"t","CreatedSince":"now","Size":"700kB"})"
           "\n";
  }
  static std::string containerLine(const std::string& id) {
    return R"({"ID":")" + id +
           R"(","Names":"n","Image":"r:t","State":"exited","Status":"s","RunningFor":"now",)"
           R"x("Size":"0B (virtual 1kB)","Labels":""})x"
           "\n";
  }
  static std::string originLine(const std::string& id, const std::string& image) {
    return R"({"id":")" + id + R"(","name":"/n","imageID":")" + image +
           R"(","startedAt":"once"})"
           "\n";
  }
  static std::string volumeLine(const std::string& name) {
    return R"({"Name":")" + name +
           R"(","Driver":"local","Labels":""})"
           "\n";
  }

  DockerSurvey survey() {
    const auto outcome = DockerService(client_, clock_).survey({});
    EXPECT_TRUE(outcome.has_value());
    return outcome.value_or(DockerSurvey{});
  }

  std::vector<std::string> noticeKeys(const DockerSurvey& survey) {
    std::vector<std::string> keys;
    for (const DockerNotice& notice : survey.notices) keys.push_back(notice.key);
    return keys;
  }

  std::map<std::string, SafeProcessResult> answers_;
  WatchedRunner runner_;
  const DockerClient client_{runner_, {.program = {"/bin/true"}}};
  const SystemClock clock_;
};

TEST_F(DockerServiceTests, putsTheListingsTogether) {
  const DockerSnapshot snapshot = survey().snapshot;
  EXPECT_EQ(snapshot.cleanupScope, (DockerCleanupScope{"default", "unix:///run/a.sock", "ID-1"}));
  EXPECT_EQ(snapshot.images.at(0).containerCount, 1);
  EXPECT_EQ(snapshot.images.at(1).containerCount, 0);
  EXPECT_EQ(snapshot.containers.at(0).startedAt, "once");
  EXPECT_EQ(snapshot.volumes.at(0).createdAt, "then");
  EXPECT_EQ(snapshot.volumes.at(1).createdAt, std::nullopt) << "gone meanwhile, or its driver does not tell";
  EXPECT_EQ(snapshot.volumes.at(0).referenceCount, 0);
  EXPECT_EQ(snapshot.volumes.at(1).sizeBytes, 6'000'000);
  EXPECT_EQ(snapshot.volumes.at(2).referenceCount, std::nullopt);
  EXPECT_EQ(snapshot.usages.at(0), (DockerResourceUsage{DockerResourceKind::images, 2, 1, 1'000'000, 700'000}));
  EXPECT_EQ(snapshot.usages.at(2), (DockerResourceUsage{DockerResourceKind::volumes, 3, 2, 11'000'000, 5'000'000}));
  for (const ProcessRequest& request : runner_.requests())
    if (request.arguments.at(0) != "context") {
      EXPECT_EQ(request.arguments.at(0), "--host");
    }
}

TEST_F(DockerServiceTests, restsNoVerdictOnWhatItCouldNotRead) {
  const auto imageSafeties = [](const DockerSnapshot& snapshot) {
    std::vector<Safety> safeties;
    for (const auto& image : snapshot.images) safeties.push_back(DockerSafetyPolicy::safetyOf(image));
    return safeties;
  };
  const struct {
    const char* command;
    SafeProcessResult answer;
    const char* notice;
  } cases[] = {
      {"container ls", printed(containerLine(containerID) + "garbage\n"), "docker.notice.containersUnknown"},
      {"container inspect", printed(originLine(containerID, "short")), "docker.notice.containersUnknown"},
      {"container inspect", printed(originLine(std::string(64, 'd'), imageA)), "docker.notice.containersUnknown"},
      {"container inspect", printed(""), "docker.notice.containersUnknown"},
      {"container inspect", failed("No such container"), "docker.notice.containersUnknown"},
  };
  const auto before = answers_;
  for (const auto& each : cases) {
    answers_ = before;
    answers_[each.command] = each.answer;
    const DockerSurvey changed = survey();
    EXPECT_THAT(noticeKeys(changed), testing::Contains(each.notice)) << each.answer.standardOutput;
    EXPECT_THAT(imageSafeties(changed.snapshot), testing::Each(Safety::protected_));
  }
  for (const SafeProcessResult& tables : {printed("garbage"), failed("a disk usage operation is already running")}) {
    answers_ = before;
    answers_["system df --verbose"] = tables;
    const DockerSurvey changed = survey();
    EXPECT_THAT(noticeKeys(changed), testing::ElementsAre("docker.notice.usageUnknown", "docker.notice.notListed"));
    for (const auto& volume : changed.snapshot.volumes)
      EXPECT_EQ(DockerSafetyPolicy::safetyOf(volume), Safety::protected_);
  }
}

TEST_F(DockerServiceTests, saysWhyThereIsNothingToShow) {
  const auto faultOf = [&] {
    const auto outcome = DockerService(client_, clock_).survey({});
    return outcome ? std::nullopt : std::optional(outcome.error());
  };
  answers_["image ls"] = failed("  refused \n");
  EXPECT_EQ(faultOf(), (DockerServiceError{DockerServiceFault::commandFailed, "refused"}));
  answers_["info"] = failed("Cannot connect");
  EXPECT_EQ(faultOf(), (DockerServiceError{DockerServiceFault::engineUnavailable, "Cannot connect"}));
}

TEST_F(DockerServiceTests, showsAnEngineThatCannotBePinnedWithoutAScope) {
  answers_["context inspect"] = failed("no such context");
  const DockerSnapshot snapshot = survey().snapshot;
  EXPECT_EQ(snapshot.cleanupScope, std::nullopt);
  EXPECT_EQ(snapshot.images.size(), 2U);
}

/// What a real engine holds.
class RealDockerServiceTests : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (TestDockerEngine::missing()) return;
    engine_ = std::make_unique<TestDockerEngine>();
    fill();
  }
  static void TearDownTestSuite() { engine_.reset(); }

  void SetUp() override {
    if (const auto reason = TestDockerEngine::missing()) GTEST_SKIP() << *reason;
  }

  static void fill() {
    used_ = engine_->makeImage("used:1", "used");
    unused_ = engine_->makeImage("unused:1", "unused");
    engine_->ask({"tag", "unused:1", "unused:2"});
    dangling_ = engine_->makeImage("taken:1", "first");
    engine_->makeImage("taken:1", "second");
    for (const Words& volume : {Words{"named"}, Words{"--label", "quorvane.keep=yes", "kept"},
                                Words{"--label", "quorvane.keep=no", "unkept"}, Words{"mounted"}}) {
      Words arguments{"volume", "create"};
      arguments.insert(arguments.end(), volume.begin(), volume.end());
      engine_->ask(arguments);
    }
    anonymous_ = engine_->ask({"volume", "create"});
    engine_->makeContainer("used:1", "created", {"-v", "mounted:/v", "--label", "com.docker.compose.project=shop"});
    engine_->ask({"run", "--network", "none", "--name", "exited", "used:1", "/program"});
    engine_->ask({"run", "--detach", "--network", "none", "--name", "running", "used:1", "/program", "wait"});
    engine_->build("used:1");
  }

  static DockerSnapshot snapshotWith(const char* program) {
    SafeProcessRunner runner;
    const SystemClock clock;
    const DockerClient client(runner, {.program = {program}, .environment = engine_->environment()});
    const auto survey = DockerService(client, clock).survey({});
    EXPECT_TRUE(survey.has_value());
    if (!survey) return {};
    EXPECT_EQ(survey->notices, std::vector<DockerNotice>());
    return survey->snapshot;
  }

  template <class Record, class Name>
  static const Record& named(const std::vector<Record>& records, Name Record::*member, const std::string& name) {
    const auto found = std::ranges::find(records, name, member);
    EXPECT_NE(found, records.end()) << name;
    static const Record none{};
    return found == records.end() ? none : *found;
  }

  static inline std::unique_ptr<TestDockerEngine> engine_;
  static inline std::string used_, unused_, dangling_, anonymous_;
};

void expectVerdicts(const DockerSnapshot& snapshot, const std::map<std::string, Safety>& wanted) {
  std::map<std::string, Safety> found;
  for (const auto& each : snapshot.images) found[each.id + each.tag] = DockerSafetyPolicy::safetyOf(each);
  for (const auto& each : snapshot.containers) found[each.name] = DockerSafetyPolicy::safetyOf(each);
  for (const auto& each : snapshot.volumes) found[each.name] = DockerSafetyPolicy::safetyOf(each);
  for (const auto& [name, safety] : wanted)
    EXPECT_TRUE(found.contains(name) && found.at(name) == safety) << name << " " << caseName(safety);
}

TEST_F(RealDockerServiceTests, seesWhatAnEngineHoldsWithEitherKindOfClient) {
  for (const char* program : {"/usr/bin/docker", "/usr/local/bin/docker"}) {
    if (::access(program, X_OK) != 0) continue;  // only Debian's is always there; a scripted one stands for the other
    const DockerSnapshot snapshot = snapshotWith(program);
    ASSERT_TRUE(snapshot.cleanupScope.has_value()) << program;
    EXPECT_EQ(snapshot.cleanupScope->endpoint, engine_->address());
    EXPECT_EQ("\"" + snapshot.cleanupScope->engineID + "\"", engine_->ask({"info", "--format", "{{json .ID}}"}));
    expectVerdicts(snapshot, {{used_ + "1", Safety::protected_},
                              {unused_ + "1", Safety::review},
                              {unused_ + "2", Safety::review},
                              {dangling_ + "<none>", Safety::safe},
                              {"created", Safety::review},
                              {"exited", Safety::review},
                              {"running", Safety::protected_},
                              {"named", Safety::review},
                              {"kept", Safety::protected_},
                              {"unkept", Safety::review},
                              {"mounted", Safety::protected_},
                              {anonymous_, Safety::review}});
    EXPECT_EQ(named(snapshot.images, &DockerImageRecord::id, used_).containerCount, 3);
    EXPECT_EQ(named(snapshot.containers, &DockerContainerRecord::name, "created").composeProject, "shop");
    EXPECT_EQ(named(snapshot.volumes, &DockerVolumeRecord::name, "mounted").referenceCount, 1);
    EXPECT_EQ(snapshot.runningContainerCount, 1);
    EXPECT_FALSE(snapshot.buildCaches.empty());
    const double exact = std::stod(engine_->ask({"image", "inspect", "--format", "{{.Size}}", unused_}));
    const auto size = named(snapshot.images, &DockerImageRecord::id, unused_).sizeBytes;
    EXPECT_NEAR(static_cast<double>(size), exact, exact / 100) << "the client gives three digits";
    EXPECT_EQ(snapshot.usages.at(1).totalCount, 3);
    EXPECT_EQ(snapshot.usages.at(1).activeCount, 1);
  }
}

}  // namespace
}  // namespace quorvane
