#include "quorvane/core/IgnoreRuleStore.h"

#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {
namespace {

constexpr const char* supportFolder = "data/Quorvane";
constexpr const char* rulesFile = "data/Quorvane/ignored-paths.json";

class IgnoreRuleStoreTests : public testing::Test {
 protected:
  IgnoreRuleStore storeOn(FileSystem& fileSystem) { return {fileSystem, random_, temp_.at(supportFolder)}; }

  mode_t permissionsOf(const char* relative) {
    struct stat status {};
    EXPECT_EQ(::stat(temp_.at(relative).bytes.c_str(), &status), 0) << relative;
    return status.st_mode & 07777;
  }

  /// Every call has to refuse and leave the file as it is.
  void expectRefusal(IgnoreRuleFault fault) {
    const std::string before = temp_.read(rulesFile);
    EXPECT_EQ(store_.load().error().fault, fault);
    EXPECT_EQ(store_.add(temp_.at("x")).error().fault, fault);
    EXPECT_EQ(store_.remove(temp_.at("x").bytes).error().fault, fault);
    EXPECT_EQ(temp_.read(rulesFile), before);
  }

  TempFolder temp_;
  std::unique_ptr<FileSystem> fileSystem_ = makeSystemFileSystem();
  SystemRandomSource random_;
  IgnoreRuleStore store_ = storeOn(*fileSystem_);
};

TEST_F(IgnoreRuleStoreTests, makesNothingForReadingOrForPathsThatNameNoPlace) {
  EXPECT_TRUE(store_.load()->empty());
  EXPECT_EQ(store_.remove("/x").error().fault, IgnoreRuleFault::notFound);
  temp_.makeLink("loop", "loop");
  for (const std::string& path : {std::string(), std::string("a/b"), std::string("/a\0b", 4), temp_.at("loop/x").bytes})
    EXPECT_EQ(store_.add({path}).error().fault, IgnoreRuleFault::invalidPath) << path;
  EXPECT_FALSE(temp_.holds("data"));
}

TEST_F(IgnoreRuleStoreTests, keepsRulesInTheOrderTheyWereMade) {
  const auto first = store_.add(temp_.at("b"));
  const auto second = store_.add(temp_.at("a\xFF"), "org.example.app");
  ASSERT_TRUE(first && second);
  EXPECT_EQ(storeOn(*fileSystem_).load(), (std::vector<IgnoreRule>{*first, *second}));
  EXPECT_EQ(second->application, "org.example.app");
  EXPECT_EQ(permissionsOf("data"), 0700U);
  EXPECT_EQ(permissionsOf(supportFolder), 0700U);
  EXPECT_EQ(permissionsOf(rulesFile), 0600U);
}

TEST_F(IgnoreRuleStoreTests, resolvesLinksAndRemembersTheChosenPath) {
  temp_.makeFolders("real/inner");
  temp_.makeLink("link", "real");
  const auto rule = store_.add({temp_.at("link").bytes + "//inner/./gone/.."});
  ASSERT_TRUE(rule);
  EXPECT_EQ(rule->path.bytes, temp_.at("link").bytes + "//inner/./gone/..");
  EXPECT_EQ(rule->canonicalPath, temp_.at("real/inner"));
  EXPECT_EQ(store_.add(temp_.at("real/inner")), *rule) << "the same place gets no second rule";
  EXPECT_EQ(store_.load()->size(), 1U);
}

TEST_F(IgnoreRuleStoreTests, removesByIdentifierPathOrCanonicalPath) {
  temp_.makeFolders("real");
  temp_.makeLink("link", "real");
  const auto add = [&](const std::string& name) { return store_.add(temp_.at(name)); };
  for (const std::string name : {"identifier", "link", "canonical"}) ASSERT_TRUE(add(name));
  const auto rules = *store_.load();
  EXPECT_EQ(store_.remove(uuidText(rules[0].id)), rules[0]);
  EXPECT_EQ(store_.remove(temp_.at("link/").bytes), rules[1]);
  EXPECT_EQ(store_.remove(rules[2].canonicalPath.bytes), rules[2]);
  EXPECT_TRUE(store_.load()->empty());
  for (const std::string& text : {std::string(), std::string("x"), rules[0].path.bytes, uuidText(rules[0].id)})
    EXPECT_EQ(store_.remove(text).error().fault, IgnoreRuleFault::notFound) << text;
}

TEST_F(IgnoreRuleStoreTests, leavesAFileAloneThatHoldsNoRules) {
  const std::string members = R"("id": "6F9619FF-8B86-4011-B42D-00C04FC964FF", "path": "/a", "canonicalPath": )";
  for (const std::string& text :
       {std::string(), std::string("{}"), std::string("[{}]"), std::string("[] []"), "[{" + members + "\"a\"}]",
        "[{" + members + "\"/a/../b\"}]", "[{" + members + "\"/a/\"}]", "[{" + members + "\"file:///a//b\"}]",
        std::string((std::size_t{4} << 20) + 1, ' ')}) {
    SCOPED_TRACE(text.substr(0, 120));
    temp_.write(rulesFile, text);
    ASSERT_EQ(::chmod(temp_.at(rulesFile).bytes.c_str(), 0600), 0);
    expectRefusal(IgnoreRuleFault::undecodable);
  }
}

TEST_F(IgnoreRuleStoreTests, doesNotTrustAFileThatOthersCouldHaveWritten) {
  temp_.write(rulesFile, "[]");
  ASSERT_EQ(::chmod(temp_.at(rulesFile).bytes.c_str(), 0620), 0);
  expectRefusal(IgnoreRuleFault::untrusted);
  ASSERT_EQ(::chmod(temp_.at(rulesFile).bytes.c_str(), 0600), 0);
  ASSERT_TRUE(store_.load());
  ASSERT_EQ(::chmod(temp_.at(supportFolder).bytes.c_str(), 0777), 0);
  expectRefusal(IgnoreRuleFault::untrustedFolder);
  EXPECT_EQ(store_.load().error().file, temp_.at(supportFolder));
}

TEST_F(IgnoreRuleStoreTests, doesNotWaitForAnotherRun) {
  ASSERT_TRUE(store_.add(temp_.at("a")));
  const auto folder = fileSystem_->openStartingFolder(temp_.at(supportFolder));
  const auto lock = fileSystem_->lockFile(folder->number(), "ignored-paths.json.lock");
  ASSERT_TRUE(lock);
  EXPECT_EQ(store_.add(temp_.at("b")).error().fault, IgnoreRuleFault::busy);
  EXPECT_EQ(store_.remove(temp_.at("a").bytes).error().fault, IgnoreRuleFault::busy);
  EXPECT_EQ(store_.load()->size(), 1U) << "reading needs no lock";
}

TEST_F(IgnoreRuleStoreTests, losesNoRuleOfSeveralRunsAtOnce) {
  constexpr int runs = 4;
  std::atomic<int> made = 0;
  {
    std::vector<std::jthread> threads;
    for (int run = 0; run < runs; ++run)
      threads.emplace_back([&, run] {
        IgnoreRuleStore own = storeOn(*fileSystem_);
        for (int number = 0; number < 10; ++number) {
          const auto rule = own.add(temp_.at(std::to_string(run) + "-" + std::to_string(number)));
          if (rule)
            ++made;
          else
            EXPECT_EQ(rule.error().fault, IgnoreRuleFault::busy);
        }
      });
  }
  EXPECT_GT(made, 0);
  EXPECT_EQ(static_cast<int>(store_.load()->size()), made);
}

TEST_F(IgnoreRuleStoreTests, writesNoFileThatItWouldNotReadBack) {
  const std::string longName(3000, 'a');
  std::string entries;
  for (int number = 0; entries.size() < (std::size_t{4} << 20) - 1000; ++number)
    entries += (number == 0 ? "" : ",") + std::string(R"({"id":"6F9619FF-8B86-4011-B42D-00C04FC964FF","path":"/)") +
               longName + R"(","canonicalPath":"/)" + std::to_string(number) + "\"}";
  temp_.write(rulesFile, "[" + entries.substr(0, entries.rfind(",{")) + "]");
  ASSERT_EQ(::chmod(temp_.at(rulesFile).bytes.c_str(), 0600), 0);
  ASSERT_TRUE(store_.load());
  const auto added = store_.add(temp_.at("new"), longName);
  ASSERT_FALSE(added);
  EXPECT_EQ(added.error().fault, IgnoreRuleFault::notWritten);
  EXPECT_EQ(added.error().reason.code, EFBIG);
  EXPECT_TRUE(store_.load());
}

TEST_F(IgnoreRuleStoreTests, holdsTheOldRulesOrTheNewOnesAfterAnyFault) {
  for (const FaultSpan span : {FaultSpan::once, FaultSpan::fromThereOn}) {
    std::size_t faults = 0;
    for (std::size_t call = 1;; ++call) {
      TempFolder temp;
      IgnoreRuleStore real(*fileSystem_, random_, temp.at(supportFolder));
      const auto old = real.add(temp.at("old"));
      ASSERT_TRUE(old);
      FailingFileSystem failing(*fileSystem_);
      failing.failAt(call, span);
      const auto added = IgnoreRuleStore(failing, random_, temp.at(supportFolder)).add(temp.at("new"));
      const auto left = real.load();
      ASSERT_TRUE(left) << "call " << call;
      EXPECT_EQ(left->front(), *old) << "call " << call;
      EXPECT_LE(left->size(), 2U) << "call " << call;
      if (added) {
        EXPECT_EQ(left->size(), 2U) << "call " << call;
      }
      if (failing.calls() < call) break;
      ++faults;
    }
    EXPECT_GT(faults, 5U);
  }
}

TEST_F(IgnoreRuleStoreTests, holdsTheOldRulesOrTheNewOnesWhenTheProcessIsKilled) {
  const auto old = store_.add(temp_.at("old"));
  ASSERT_TRUE(old);
  bool isKilled = true;
  std::size_t call = 1;
  for (; isKilled; ++call) {
    SCOPED_TRACE(call);
    const FilePath path = temp_.at("new " + std::to_string(call));
    const pid_t child = ::fork();
    if (child == 0) {
      FailingFileSystem killing(*fileSystem_);
      killing.beforeCall(call, [] { ::kill(::getpid(), SIGKILL); });
      ::_exit(storeOn(killing).add(path) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    isKilled = WIFSIGNALED(status);
    EXPECT_TRUE(isKilled || WEXITSTATUS(status) == 0);
    const auto left = store_.load();
    ASSERT_TRUE(left);
    EXPECT_EQ(left->front(), *old);
    EXPECT_TRUE(isKilled || left->back().canonicalPath == path);
    ASSERT_TRUE(store_.add(path)) << "also after a killed process";
    EXPECT_EQ(store_.load()->size(), call + 1);
    EXPECT_EQ(temp_.names(supportFolder), (std::vector<std::string>{"ignored-paths.json", "ignored-paths.json.lock"}));
  }
  EXPECT_GT(call, 8U);
}

TEST_F(IgnoreRuleStoreTests, findsItsFolderThroughALink) {
  temp_.makeFolders("elsewhere");
  temp_.makeLink("data", "elsewhere");
  ASSERT_TRUE(store_.add(temp_.at("a")));
  EXPECT_TRUE(temp_.holds("elsewhere/Quorvane/ignored-paths.json"));
  TempFolder other;
  other.makeLink("data", "nowhere");
  EXPECT_EQ(IgnoreRuleStore(*fileSystem_, random_, other.at(supportFolder)).add(other.at("a")).error().fault,
            IgnoreRuleFault::notWritten);
  EXPECT_FALSE(other.holds("nowhere"));
}

}  // namespace
}  // namespace quorvane
