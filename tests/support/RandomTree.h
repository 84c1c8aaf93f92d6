#pragma once

#include "tests/support/Chance.h"
#include "tests/support/TempFolder.h"

#include <string>
#include <vector>

namespace quorvane {

/// Makes objects in a folder of a test, by chance: files, empty and sparse ones too, with several names, folders with
/// more of the same, links to anything, pipes and sockets; under odd names, with odd permissions and extended
/// attributes. All of it was last written 30 days ago or earlier. What only the administrator could move is not made
/// for anybody else.
class RandomTree {
 public:
  RandomTree(const TempFolder& folder, Chance& chance) : folder_(folder), chance_(chance) {}

  /// Makes this many in a folder, which is made where it is missing. Their paths, relative to the test's folder.
  std::vector<std::string> fill(const std::string& parent, std::size_t count);

  /// Gives an object the permissions, attributes and times of chance.
  void dress(const std::string& relative);

 private:
  std::string freeName(const std::string& parent);
  std::string makeOne(const std::string& parent, int depth);
  void makeContent(const std::string& relative, int depth);
  void makeFile(const std::string& relative);
  void makeLink(const std::string& relative);

  const TempFolder& folder_;
  Chance& chance_;
  std::vector<std::string> files_ = {};
};

}  // namespace quorvane
