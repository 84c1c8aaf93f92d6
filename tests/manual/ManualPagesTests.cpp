#include "quorvane/app/manual/ManualPages.h"

#include "quorvane/app/cli/arguments/Arguments.h"
#include "quorvane/app/manual/RoffPage.h"
#include "tests/manual/ManualRun.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quorvane {
namespace {

TEST(ManualPagesTests, letNothingInATextBeRoff) {
  const struct {
    std::string_view text, roff;
  } cases[] = {
      {"plain", "plain"},
      {"--on-conflict", "\\-\\-on\\-conflict"},
      {"a\\fBb", "a\\efBb"},
      {"~/x ^ 'y' \"z\"", "\\(ti/x \\(ha \\(aqy\\(aq \\(dqz\\(dq"},
      {"say `a -b` twice", "say \\fBa \\-b\\fR twice"},
      {"open `end", "open \\fBend\\fR"},
      {"\xC3\xA9\xE2\x80\xA6", "\\[u00E9]\\[u2026]"},
  };
  for (const auto& each : cases) EXPECT_EQ(roffText(each.text), each.roff);
  EXPECT_EQ(roffUsage("quorvane [--from FILE] PATH-OR-ID..."),
            "\\fBquorvane\\fR [\\fB\\-\\-from\\fR \\fIFILE\\fR] \\fIPATH\\-OR\\-ID\\fR...");

  RoffPage page({"name", "2026-01-02", "source"});
  page.paragraph(roffText(".so /etc/passwd"));
  page.example("'tis\n.sh rm");
  const std::string text = std::move(page).text();
  EXPECT_TRUE(text.contains("\n\\&.so /etc/passwd\n")) << text;
  EXPECT_TRUE(text.contains("\n\\(aqtis\n\\&.sh rm\n")) << text;
}

// The lines of all that a person reads, with single spaces.
std::string shown(const std::string& page) {
  return outputOf("MANWIDTH=200 LC_ALL=C.UTF-8 man -E UTF-8 -l '" + page + "' | col -bx | tr -s ' \\n' ' '");
}

TEST(ManualPagesTests, areShownWithoutAWarningAndHoldTheWholeTable) {
  if (!isInstalled("man") || !isInstalled("col")) GTEST_SKIP() << "man is not installed";
  const TempFolder folder;
  const MessageCatalogue catalogue = MessageCatalogue::english();
  std::string all;
  for (const ManualFile& page : manualPages(catalogue, {"1.2.3", "2026-01-02"})) {
    folder.write(page.name, page.text);
    const std::string path = folder.at(page.name).bytes;
    EXPECT_EQ(outputOf("LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l -Tutf8 -Z '" + path + "' 2>&1 >/dev/null"), "")
        << page.name;
    EXPECT_FALSE(outputOf("lexgrog '" + path + "'").contains("parse failed")) << page.name;
    const std::string text = shown(path);
    EXPECT_TRUE(text.contains("Quorvane 1.2.3 2026-01-02")) << text;
    EXPECT_FALSE(text.contains("manual.") || text.contains("cli.") || text.contains("{{")) << text;
    for (const OptionDescription& option : globalOptionDescriptions())
      EXPECT_TRUE(text.contains(" " + spellingOf(option) + " ")) << page.name << " " << option.name;
    all += text;
  }
  for (const CommandDescription& command : commandDescriptions()) {
    EXPECT_TRUE(command.onlyLeadsToOthers || all.contains(usageOf(command))) << command.words;
    for (const auto rows : {command.options, command.arguments})
      for (const OptionDescription& row : rows) {
        std::string meaning = catalogue.text(meaningOf(row));
        std::erase(meaning, '`');
        EXPECT_TRUE(all.contains(spellingOf(row) + " " + meaning)) << command.words << " " << row.name;
      }
  }
}

}  // namespace
}  // namespace quorvane
