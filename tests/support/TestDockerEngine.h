#pragma once

#include "quorvane/platform/ProcessRunner.h"
#include "tests/support/TempFolder.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace quorvane {

/// A real Docker engine of a test's own, with its own socket, data and process, that ends with the object. It knows
/// images that hold one small program.
class TestDockerEngine {
 public:
  /// Why this machine cannot run one; nothing when it can.
  static std::optional<std::string> missing();

  /// Starts it and waits until it answers.
  TestDockerEngine();
  ~TestDockerEngine();
  TestDockerEngine(const TestDockerEngine&) = delete;
  TestDockerEngine& operator=(const TestDockerEngine&) = delete;

  /// "unix://" and the path of its socket.
  std::string address() const;
  /// An environment in which the client's own commands reach it.
  std::map<std::string, std::string> environment() const;

  /// What Debian's client prints for these arguments, trimmed; a failed run fails the test.
  std::string ask(std::vector<std::string> arguments) const;
  /// Whether such a run succeeds.
  bool accepts(std::vector<std::string> arguments) const;

  /// Makes an image of this name out of the program and some content; its full identifier.
  std::string makeImage(const std::string& name, const std::string& content) const;
  /// Makes a container of the image that never ran; its full identifier.
  std::string makeContainer(const std::string& image, const std::string& name,
                            std::vector<std::string> options = {}) const;
  /// One that the engine failed to remove, and knows as dead since it was started again; its full identifier.
  std::string makeDeadContainer(const std::string& image, const std::string& name);
  /// Builds on this image, so that there is build cache.
  void build(const std::string& image) const;
  /// Builds on this image without build cache: two images without names are left between the two.
  void buildInSteps(const std::string& image, const std::string& name) const;

 private:
  void start();
  void stop() const;
  SafeProcessResult run(std::vector<std::string> arguments) const;
  bool isUp() const;

  TempFolder folder_;
  pid_t process_ = -1;
};

}  // namespace quorvane
