#pragma once

#include <cstdio>
#include <string>

namespace quorvane {

/// What a command of the shell writes to its standard output.
inline std::string outputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return output;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) output += static_cast<char>(c);
  ::pclose(pipe);
  return output;
}

inline bool isInstalled(const std::string& program) { return !outputOf("command -v " + program).empty(); }

}  // namespace quorvane
