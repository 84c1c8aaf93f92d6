#include "quorvane/core/IgnoreRule.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace quorvane {
namespace {

IgnoreRule ruleFor(const std::string& path) {
  return {.id = {}, .path = {path}, .canonicalPath = {path}, .application = {}};
}

TEST(IgnoreRuleTests, coversItsLocationAndWhatIsBelow) {
  const std::vector<IgnoreRule> rules = {ruleFor("/x"), ruleFor("/a/b"), ruleFor("/a"), ruleFor("/c\xFF")};
  const auto covering = [&](const char* path) {
    const IgnoreRule* const rule = ruleCovering(rules, {path});
    return rule ? rule->path.bytes : "none";
  };
  for (const auto& [path, rule] : std::vector<std::pair<const char*, const char*>>{{"/a", "/a"},
                                                                                   {"/a/c", "/a"},
                                                                                   {"/a/b/c", "/a/b"},
                                                                                   {"/ab", "none"},
                                                                                   {"/A", "none"},
                                                                                   {"/", "none"},
                                                                                   {"/c\xFF/b", "/c\xFF"},
                                                                                   {"/c\xFE", "none"},
                                                                                   {"/c\xEF\xBF\xBD", "none"}})
    EXPECT_EQ(covering(path), rule) << path;
  EXPECT_TRUE(ruleCovering({ruleFor("/")}, {"/"}));
  EXPECT_TRUE(ruleCovering({ruleFor("/")}, {"/anything"}));
}

}  // namespace
}  // namespace quorvane
