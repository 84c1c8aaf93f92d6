// Measures one tree and prints what a size, a digest and the newest time of it cost. The program that `./bench` times
// beside other people's walks: WalkBenchmark [--no-digest] FOLDER

#include "quorvane/core/TreeWalker.h"
#include "quorvane/platform/SystemPlatform.h"

#include <fmt/format.h>

#include <cstdio>
#include <string_view>

using namespace quorvane;

int main(int count, char** arguments) {
  WalkRequest request;
  request.takesDigest = count != 3 || std::string_view(arguments[1]) != "--no-digest";
  if (count != (request.takesDigest ? 2 : 3)) {
    fmt::print(stderr, "usage: WalkBenchmark [--no-digest] FOLDER\n");
    return 2;
  }
  const FilePath path = standardised({arguments[count - 1]});
  const auto fileSystem = makeSystemFileSystem();
  raiseDescriptorLimit();
  const auto parent = fileSystem->openStartingFolder(parentOf(path));
  if (!parent) return 1;
  TreeWalker walker(*fileSystem);
  const auto outcomes = walker.measure({{parent->number(), std::string(leafOf(path))}}, request);
  if (!outcomes[0]) return 1;
  const TreeMeasurement& tree = *outcomes[0];
  fmt::print("entries {} allocated {} newest {} unreadable {} digest {}\n", tree.entryCount, tree.allocatedBytes,
             tree.newestModification.seconds, tree.unreadableCount, tree.digest);
  return tree.isLowerBound() ? 1 : 0;
}
