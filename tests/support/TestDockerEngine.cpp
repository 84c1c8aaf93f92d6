#include "tests/support/TestDockerEngine.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/platform/FileDescriptor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include <fcntl.h>
#include <linux/fs.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {

namespace {

constexpr const char* engineProgram = "/usr/sbin/dockerd";
constexpr const char* clientProgram = "/usr/bin/docker";
constexpr const char* programText = "#include <unistd.h>\nint main(int n, char**) { return n > 1 ? pause() : 0; }\n";

SafeProcessResult runProgram(const char* program, std::vector<std::string> arguments,
                             std::map<std::string, std::string> environment) {
  environment.try_emplace("PATH", "/usr/sbin:/usr/bin:/sbin:/bin");
  ProcessRequest request;
  request.executable = {program};
  request.arguments = std::move(arguments);
  request.environment = std::move(environment);
  request.timeLimit = std::chrono::seconds(60);
  auto result = SafeProcessRunner().run(request, {});
  EXPECT_TRUE(result.has_value()) << program;
  return result ? *std::move(result) : SafeProcessResult{{}, {}, -1};
}

}  // namespace

std::optional<std::string> TestDockerEngine::missing() {
  if (::geteuid() != 0) return "only root can start a Docker engine";
  for (const char* program : {engineProgram, clientProgram})
    if (::access(program, X_OK) != 0) return std::string("there is no ") + program;
  return std::nullopt;
}

TestDockerEngine::TestDockerEngine() {
  folder_.write("program.cpp", programText);
  const auto compiled = runProgram(
      "/usr/bin/g++", {"-static", "-Os", "-o", folder_.at("program").bytes, folder_.at("program.cpp").bytes}, {});
  EXPECT_EQ(compiled.exitCode, 0) << compiled.standardError;
  start();
}

void TestDockerEngine::start() {
  const std::string data = folder_.at("data").bytes, exec = folder_.at("exec").bytes, pid = folder_.at("pid").bytes;
  // What an engine says that it is comes from a key, which those of one machine would share.
  folder_.write("engine.json", R"({"deprecated-key-path":")" + folder_.at("key.json").bytes + "\"}");
  const std::string configuration = folder_.at("engine.json").bytes;
  const std::string log = folder_.at("log").bytes, host = address();
  process_ = ::fork();
  if (process_ == 0) {
    const int output = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    ::dup2(output, 1);
    ::dup2(output, 2);
    ::setenv("PATH", "/usr/sbin:/usr/bin:/sbin:/bin", 1);
    ::execl(engineProgram, engineProgram, "--iptables=false", "--ip6tables=false", "--bridge=none",
            "--storage-driver=vfs", "--config-file", configuration.c_str(), "--host", host.c_str(), "--data-root",
            data.c_str(), "--exec-root", exec.c_str(), "--pidfile", pid.c_str(), nullptr);
    ::_exit(127);
  }
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!isUp() && std::chrono::steady_clock::now() < limit)
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_TRUE(isUp()) << folder_.read("log");
}

// Its containers end with it.
TestDockerEngine::~TestDockerEngine() {
  const std::string running = std::string(trimmed(run({"container", "ls", "--quiet"}).standardOutput));
  for (std::size_t start = 0; start < running.size(); start += 13)
    run({"container", "kill", running.substr(start, 12)});
  stop();
}

void TestDockerEngine::stop() const {
  if (process_ <= 0) return;  // it was never started
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

std::string TestDockerEngine::address() const { return "unix://" + folder_.at("engine.sock").bytes; }

std::map<std::string, std::string> TestDockerEngine::environment() const {
  return {{"DOCKER_HOST", address()}, {"HOME", folder_.path().bytes}, {"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"}};
}

SafeProcessResult TestDockerEngine::run(std::vector<std::string> arguments) const {
  auto variables = environment();
  variables["DOCKER_BUILDKIT"] = "1";
  return runProgram(clientProgram, std::move(arguments), std::move(variables));
}

bool TestDockerEngine::isUp() const { return run({"info", "--format", "{{json .ID}}"}).exitCode == 0; }

std::string TestDockerEngine::ask(std::vector<std::string> arguments) const {
  const SafeProcessResult result = run(std::move(arguments));
  EXPECT_EQ(result.exitCode, 0) << result.standardError;
  return std::string(trimmed(result.standardOutput));
}

bool TestDockerEngine::accepts(std::vector<std::string> arguments) const {
  return run(std::move(arguments)).exitCode == 0;
}

std::string TestDockerEngine::makeImage(const std::string& name, const std::string& content) const {
  folder_.write("content", content);
  const std::string tar = folder_.at("image.tar").bytes;
  const auto packed = runProgram("/bin/tar", {"-C", folder_.path().bytes, "-cf", tar, "program", "content"}, {});
  EXPECT_EQ(packed.exitCode, 0) << packed.standardError;
  return ask({"import", tar, name});
}

std::string TestDockerEngine::makeContainer(const std::string& image, const std::string& name,
                                            std::vector<std::string> options) const {
  std::vector<std::string> arguments{"create", "--network", "none", "--name", name};
  arguments.insert(arguments.end(), options.begin(), options.end());
  arguments.insert(arguments.end(), {image, "/program"});
  return ask(arguments);
}

std::string TestDockerEngine::makeDeadContainer(const std::string& image, const std::string& name) {
  const std::string id = makeContainer(image, name);
  const std::string layer = folder_.read("data/image/vfs/layerdb/mounts/" + id + "/mount-id");
  const FilePath program = folder_.at("data/vfs/dir/" + layer + "/program");
  const auto makeImmutable = [&](bool isImmutable) {
    const FileDescriptor file(::open(program.bytes.c_str(), O_RDONLY | O_CLOEXEC));
    int flags = 0;
    EXPECT_EQ(::ioctl(file.number(), FS_IOC_GETFLAGS, &flags), 0) << program.bytes;
    flags = isImmutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    EXPECT_EQ(::ioctl(file.number(), FS_IOC_SETFLAGS, &flags), 0) << program.bytes;
  };
  makeImmutable(true);
  EXPECT_FALSE(accepts({"container", "rm", id}));
  makeImmutable(false);
  stop();
  start();
  return id;
}

void TestDockerEngine::build(const std::string& image) const {
  folder_.write("context/Dockerfile", "FROM " + image + "\nCOPY Dockerfile /copied\n");
  ask({"build", "--quiet", "--tag", "built:1", folder_.at("context").bytes});
}

void TestDockerEngine::buildInSteps(const std::string& image, const std::string& name) const {
  folder_.write("steps/Dockerfile", "FROM " + image + "\nLABEL first=1\nLABEL second=2\nLABEL third=3\n");
  auto variables = environment();
  variables["DOCKER_BUILDKIT"] = "0";
  const auto built =
      runProgram(clientProgram, {"build", "--quiet", "--tag", name, folder_.at("steps").bytes}, std::move(variables));
  EXPECT_EQ(built.exitCode, 0) << built.standardError;
}

}  // namespace quorvane
