#pragma once

#include "quorvane/app/messages/HarmlessText.h"
#include "quorvane/platform/FileDescriptor.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace quorvane {

/// Where the program writes to: standard output or standard error.
class OutputChannel {
 public:
  virtual ~OutputChannel() = default;

  /// Writes all of it before it returns, however long the reader takes. After a failure nothing more is written.
  virtual void write(std::string_view bytes) = 0;

  static constexpr int nothing = -1;

  /// From now on, a reader that takes nothing is not waited for once the descriptor `interrupt` can be read from, but
  /// for a moment: what it leaves no room for is dropped, which is no failure. `nothing` ends that.
  virtual void giveUpAfter(int interrupt) = 0;

  /// Why writing failed: an `errno` number, 0 as long as it did not.
  virtual int failure() const = 0;

  virtual bool isTerminal() const = 0;

  /// The descriptor of a pipe that is only written to, of which `poll` tells nothing but that its reader has gone;
  /// `nothing` elsewhere.
  virtual int pipe() const = 0;

  /// The width of the terminal at this moment; 80 where there is none to tell it.
  virtual std::size_t columns() const = 0;

  /// Its height; 24 where there is none to tell it.
  virtual std::size_t rows() const = 0;
};

/// An open descriptor, not owned.
class DescriptorChannel final : public OutputChannel {
 public:
  explicit DescriptorChannel(int descriptor);

  void write(std::string_view bytes) override;
  void giveUpAfter(int interrupt) override;
  int failure() const override { return failure_; }
  bool isTerminal() const override { return isTerminal_; }
  int pipe() const override;
  std::size_t columns() const override;
  std::size_t rows() const override;

 private:
  bool waitForRoom() const;

  int descriptor_;
  FileDescriptor unwaiting_;  ///< the same terminal, for writing without waiting
  int interrupt_ = nothing;
  int failure_ = 0;
  bool isTerminal_;
};

using EnvironmentVariables = std::map<std::string, std::string>;

/// How text is shown on a channel.
struct TextStyle {
  /// In columns that fit the width, with marks and bars for the eye. Otherwise it is plain: each fact in words, those
  /// of one item on one line with tabs between them, for scripts and for programs that read aloud.
  bool isLaidOut = false;
  bool hasColours = false;
  bool canRedraw = false;  ///< a line can be drawn over
  CharacterSet characters = CharacterSet::ascii;
  std::size_t columns = 80;

  bool operator==(const TextStyle&) const = default;
};

/// Laid out on terminals other than TERM=dumb. Colours and redrawing only on terminals that can, and no colours with
/// NO_COLOR; letters beyond ASCII only where the environment says that they are UTF-8.
TextStyle textStyle(const OutputChannel& channel, const EnvironmentVariables& environment);

/// The colours that stand for something. The first one is that of the text around.
enum class Tone { plain, strong, faint, good, caution, bad, accent };

/// The text in its colour, or as it is where there are none.
std::string toned(std::string_view text, Tone tone, const TextStyle& style);

}  // namespace quorvane
