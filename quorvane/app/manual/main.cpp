// Writes the manual pages and the completions of shells: make-manual DATE FOLDER, which holds man1 and completions.
#include "quorvane/app/cli/Version.h"
#include "quorvane/app/manual/Completions.h"
#include "quorvane/app/manual/ManualPages.h"

#include <fmt/format.h>

#include <cstdio>
#include <fstream>

namespace {

using namespace quorvane;

bool isWritten(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (file.fail()) fmt::print(stderr, "make-manual: cannot write {}\n", path);
  return !file.fail();
}

}  // namespace

int main(int count, char** values) {
  if (count != 3) {
    fmt::print(stderr, "usage: make-manual DATE FOLDER\n");
    return 2;
  }
  const std::string date = values[1], folder = values[2];
  const MessageCatalogue catalogue = MessageCatalogue::english();
  bool isDone = isWritten(folder + "/completions/quorvane.bash", bashCompletion()) &&
                isWritten(folder + "/completions/_quorvane", zshCompletion(catalogue)) &&
                isWritten(folder + "/completions/quorvane.fish", fishCompletion(catalogue));
  const std::vector<ManualFile> pages = manualPages(catalogue, {std::string(programVersion()), date});
  for (const ManualFile& page : pages) isDone = isDone && isWritten(folder + "/man1/" + page.name, page.text);
  return isDone ? 0 : 1;
}
