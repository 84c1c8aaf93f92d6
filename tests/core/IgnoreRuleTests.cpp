#include "quorvane/core/IgnoreRule.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane {
namespace {

IgnoreRule ruleFor(const std::string& path) {
  return {.id = {}, .path = {path}, .canonicalPath = {path}, .application = {}};
}

TEST(IgnoreRuleTests, coversItsLocationAndWhatIsBelow) {
  struct Case {
    std::string rule, path;
    bool isCovered;
  };
  for (const auto& [rule, path, isCovered] : std::vector<Case>{
           {"/home/u/a", "/home/u/a", true},
           {"/home/u/a", "/home/u/a/b/c", true},
           {"/home/u/a", "/home/u/ab", false},
           {"/home/u/a", "/home/u", false},
           {"/home/u/a", "/home/u/A", false},
           {"/", "/", true},
           {"/", "/anything", true},
           {"/a\xFF", "/a\xFF/b", true},
           {"/a\xFF", "/a\xFE", false},
           {"/a\xFF", "/a\xEF\xBF\xBD", false},
       })
    EXPECT_EQ(ruleCovering({ruleFor(rule)}, {path}) != nullptr, isCovered) << rule << " and " << path;
}

TEST(IgnoreRuleTests, isFoundAmongOthers) {
  const std::vector<IgnoreRule> rules = {ruleFor("/x"), ruleFor("/a/b"), ruleFor("/a")};
  EXPECT_EQ(ruleCovering(rules, {"/a/b/c"}), &rules[1]);
  EXPECT_EQ(ruleCovering(rules, {"/a/c"}), &rules[2]);
  EXPECT_EQ(ruleCovering(rules, {"/b"}), nullptr);
  EXPECT_EQ(ruleCovering({}, {"/"}), nullptr);
}

}  // namespace
}  // namespace quorvane
