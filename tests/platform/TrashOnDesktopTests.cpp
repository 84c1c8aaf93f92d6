// What other programs make of our Trash, and we of theirs.
#include "quorvane/platform/linux/TrashInfo.h"
#include "tests/platform/TrashHome.h"

#include <gmock/gmock.h>

namespace quorvane {
namespace {

using testing::HasSubstr;

class TrashOnDesktopTests : public TrashHome {};

TEST_F(TrashOnDesktopTests, theDesktopListsAndRestoresWhatWePutThere) {
  const auto trash = homeTrash();
  const std::vector<std::string> names = {"a.log", "100% of it", "\xC3\xA4\xFF\xFE"};
  for (const std::string& name : names) received(*trash, name, name);
  EXPECT_EQ(received(*trash, "a.log", "second"), "a.2.log");
  home_.makeFolders("work/folder/inner");
  receive(*trash, "folder").value();
  trash->tellSizes({{"folder", 8192}});
  const std::string list = onDesktop("gio trash --list");
  for (const std::string& name : {names[0], names[1], std::string("folder")})
    EXPECT_THAT(list, HasSubstr("\t" + home_.at("work/" + name).bytes + "\n"));
  onDesktop("gio trash --restore trash:///a.2.log trash:///folder \"trash:///100%25%20of%20it\"");
  EXPECT_EQ(home_.read("work/a.log"), "second");
  EXPECT_EQ(home_.read("work/100% of it"), "100% of it");
  EXPECT_TRUE(home_.holds("work/folder/inner"));
  EXPECT_EQ(notes().size(), 2u);
  EXPECT_EQ(items().size(), 2u);
}

TEST_F(TrashOnDesktopTests, whatOthersPutThereStaysTheirs) {
  home_.write("work/x", "by gio"), outputOf(environment() + "gio trash " + home_.at("work/x").bytes);
  home_.write("work/x", "by trash-cli"), outputOf(environment() + "trash-put " + home_.at("work/x").bytes);
  ASSERT_EQ(items().size(), 2u);
  const auto trash = homeTrash();
  const std::string leaf = received(*trash, "x", "ours");
  EXPECT_EQ(home_.read("data/Trash/files/" + leaf), "ours");
  for (const std::string& item : items()) {
    const std::string before = home_.read("data/Trash/info/" + item + ".trashinfo");
    EXPECT_EQ(trashInfoFromText(before)->path, home_.at("work/x").bytes);
    ASSERT_TRUE(trash->ensureNote(item, noteFor("other")));
    EXPECT_EQ(home_.read("data/Trash/info/" + item + ".trashinfo"), before);
  }
  home_.write("work/x", "by gio again"), outputOf(environment() + "gio trash " + home_.at("work/x").bytes);
  EXPECT_EQ(items().size(), 4u);
  EXPECT_EQ(home_.read("data/Trash/files/" + leaf), "ours");
}

}  // namespace
}  // namespace quorvane
