#pragma once

#include "quorvane/base/Outcome.h"
#include "quorvane/platform/PosixError.h"

#include <cstddef>
#include <optional>
#include <string>

namespace quorvane {

/// Where answers come from: standard input.
class InputChannel {
 public:
  virtual ~InputChannel() = default;

  virtual bool isTerminal() const = 0;

  /// What becomes readable when something is typed; -1 where nothing does.
  virtual int descriptor() const = 0;

  /// What was typed and not read yet, without waiting for more than the first byte; empty at the end.
  virtual std::string readKeys() = 0;

  /// The next line without its end; waits for it. Nothing at the end of the input, when reading fails, and as soon as
  /// the descriptor `interrupt` is readable.
  virtual std::optional<std::string> readLine(int interrupt) = 0;

  /// Everything up to the end. EFBIG when it is more than `limit` bytes.
  virtual Outcome<std::string, PosixError> readAll(std::size_t limit) = 0;
};

/// An open descriptor, not owned.
class DescriptorInput final : public InputChannel {
 public:
  explicit DescriptorInput(int descriptor);

  bool isTerminal() const override { return isTerminal_; }
  int descriptor() const override { return descriptor_; }
  std::string readKeys() override;
  std::optional<std::string> readLine(int interrupt) override;
  Outcome<std::string, PosixError> readAll(std::size_t limit) override;

 private:
  /// Reads on; false at the end.
  Outcome<bool, PosixError> readMore();

  int descriptor_;
  bool isTerminal_;
  std::string buffer_;  ///< read and not taken yet
};

}  // namespace quorvane
