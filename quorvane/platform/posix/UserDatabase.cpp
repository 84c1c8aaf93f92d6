#include "quorvane/platform/posix/UserDatabase.h"

#include <cerrno>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace quorvane {

std::optional<FilePath> homeFromUserDatabase() {
  constexpr std::size_t mostBytes = 1 << 20;
  for (std::size_t size = 1024; size <= mostBytes; size *= 2) {
    std::vector<char> storage(size);
    passwd record{};
    passwd* found = nullptr;
    const int code = ::getpwuid_r(::geteuid(), &record, storage.data(), storage.size(), &found);
    if (code == ERANGE) continue;
    if (found == nullptr || found->pw_dir == nullptr || found->pw_dir[0] == '\0') return std::nullopt;
    return FilePath{found->pw_dir};
  }
  return std::nullopt;
}

}  // namespace quorvane
