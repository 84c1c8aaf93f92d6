#include "quorvane/app/rules/RulesDocument.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace quorvane {
namespace {

TEST(RulesDocumentTests, saysWhatTheTableSays) {
  std::ifstream file(QUORVANE_SOURCE_DIR "/docs/RULES.md");
  const std::string present{std::istreambuf_iterator<char>(file), {}};
  EXPECT_TRUE(present == rulesDocument(linuxLocations(), MessageCatalogue::english()))
      << "docs/RULES.md is not what the table says now: run tools/make-rules and look at the difference";
}

}  // namespace
}  // namespace quorvane
