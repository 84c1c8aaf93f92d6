// What the desktop and other programs do with the items that were cleaned.

#include "tests/cli/CleanHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace quorvane {
namespace {

using testing::HasSubstr;

TEST(TrashInteropTests, undoTellsWhatOthersTookOutOfTheTrash) {
  const struct {
    const char* command;
    std::size_t inPlace, putBack;
  } cases[] = {
      {"dbus-run-session -- gio trash --restore trash:///thumbnails", 3, 1},
      {"echo 0 | trash-restore", 3, 1},
      {"trash-rm thumbnails", 2, 1},
      {"trash-empty", 2, 0},
  };
  for (const auto& [command, inPlace, putBack] : cases) {
    SCOPED_TRACE(command);
    const CleanHome home;
    ASSERT_EQ(home.run({"clean", "--yes"}).code, 0);
    ASSERT_EQ(home.caches().size(), 2U);
    const std::string script = "cd '" + home.at(".cache") + "' && export XDG_DATA_HOME='" + home.at(".local/share") +
                               "' GVFS_DISABLE_FUSE=1 && { " + command + "; } >/dev/null 2>&1";
    ASSERT_EQ(std::system(script.c_str()), 0);  // NOLINT(concurrency-mt-unsafe): no other thread
    EXPECT_EQ(home.caches().size(), inPlace);

    const CommandLineRun undone = home.run({"undo"});
    EXPECT_EQ(undone.code, 1);
    EXPECT_THAT(undone.errors, HasSubstr("[recovery.failure.missing]"));
    EXPECT_EQ(home.caches().size(), inPlace + putBack);
    std::size_t restored = 0;
    for (const Json& entry : home.json({"history"})) restored += entry["items"][0].contains("restoredPath") ? 1U : 0U;
    EXPECT_EQ(restored, putBack) << "only what this program put back";
    for (const std::string& name : home.caches()) EXPECT_EQ(home.folder().read(".cache/" + name + "/file"), "content");
    EXPECT_EQ(home.json({})["pendingCount"], 0);

    EXPECT_EQ(home.run({"clean", "--yes"}).code, 0) << "what came back can be cleaned again";
    EXPECT_EQ(home.caches().size(), 2U);
  }
}

}  // namespace
}  // namespace quorvane
