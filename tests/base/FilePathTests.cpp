#include "quorvane/base/FilePath.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace quorvane {
namespace {

TEST(FilePathTests, standardisesWithoutLookingAtTheDisk) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"/", {"/", "//", "/..", "/a/../.."}},
      {"/a", {"/../../a", "/a/", "/a/b/.."}},
      {"/a/b/c", {"/a//b/./c/"}},
      {"/a/.../b", {"/a/.../b"}},
      {"/a/..b/c..", {"/a/..b/c.."}},
      {"/a\xFF/b\n", {"/a\xFF/./b\n"}},
  };
  for (const auto& [standard, all] : cases)
    for (const std::string& given : all) EXPECT_EQ(standardised({given}).bytes, standard) << given;
}

TEST(FilePathTests, tellsParentLeafAndExtension) {
  struct Case {
    std::string path, parent, leaf, extension;
  };
  for (const auto& [path, parent, leaf, extension] : std::vector<Case>{
           {"/", "/", "/", ""},
           {"/a", "/", "a", ""},
           {"/a/b.tar.gz", "/a", "b.tar.gz", "gz"},
           {"/a/.hidden", "/a", ".hidden", ""},
           {"/a/.hidden.log", "/a", ".hidden.log", "log"},
           {"/a/last.", "/a", "last.", ""},
       }) {
    EXPECT_EQ(parentOf({path}).bytes, parent) << path;
    EXPECT_EQ(leafOf({path}), leaf) << path;
    EXPECT_EQ(extensionOf(leafOf({path})), extension) << path;
  }
}

TEST(FilePathTests, comparesWholeComponents) {
  struct Case {
    std::string path, folder;
    bool isBelow;
  };
  for (const auto& [path, folder, below] : std::vector<Case>{
           {"/a/b", "/a", true},
           {"/a", "/a", false},
           {"/ab", "/a", false},
           {"/a-b/c", "/a", false},
           {"/a", "/a/b", false},
           {"/a", "/", true},
           {"/", "/", false},
           {"/a/\xFF", "/a", true},
       }) {
    EXPECT_EQ(isBelow({path}, {folder}), below) << path << " below " << folder;
    EXPECT_EQ(isAtOrBelow({path}, {folder}), below || path == folder) << path << " at or below " << folder;
    if (below) {
      EXPECT_EQ(joined({folder}, relativeTo({folder}, {path})).bytes, path);
    }
  }
}

TEST(FilePathTests, putsExactlyOneSlashBetween) {
  EXPECT_EQ(joined({"/"}, "a").bytes, "/a");
  EXPECT_EQ(joined({"/a"}, "b/c").bytes, "/a/b/c");
  EXPECT_EQ(joined({"/a/"}, "b").bytes, "/a/b");
  EXPECT_EQ(joined({"/a"}, "").bytes, "/a");
}

TEST(FileUrlTests, encodesEveryByteThatAUrlDoesNotHold) {
  EXPECT_EQ(fileUrlText({"/a b/%41#?[\"\n\xFF"}), "file:///a%20b/%2541%23%3F%5B%22%0A%FF");
  std::string everyByte = "/";
  for (int byte = 1; byte < 256; ++byte) everyByte += static_cast<char>(byte);
  EXPECT_EQ(pathFromFileUrl(fileUrlText({everyByte})), FilePath{everyByte});
}

TEST(FileUrlTests, readsOnlyLocalAbsolutePaths) {
  EXPECT_EQ(pathFromFileUrl("file:///a/"), FilePath{"/a"});
  EXPECT_EQ(pathFromFileUrl("file:///a/%2F//"), FilePath{"/a"});  // so that what is written of it reads the same again
  EXPECT_EQ(pathFromFileUrl("file:///"), FilePath{"/"});
  EXPECT_EQ(pathFromFileUrl("file:///%e4%C3"), FilePath{"/\xE4\xC3"});
  for (const std::string text : {"", "/a", "file:", "file://", "file://host/a", "file:a", "FILE:///a", "http:///a",
                                 "file:///a?b", "file:///a#b", "file:///%", "file:///%4", "file:///%4g", "file:///%00"})
    EXPECT_EQ(pathFromFileUrl(text), std::nullopt) << text;
  EXPECT_EQ(pathFromFileUrl(std::string_view("file:///a\0b", 11)), std::nullopt);
}

}  // namespace
}  // namespace quorvane
