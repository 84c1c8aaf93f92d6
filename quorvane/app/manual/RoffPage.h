#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace quorvane {

/// Text of a catalogue as roff shows it, letter by letter: nothing in it is a request or an escape, and dashes, quotes
/// and tildes can be copied into a shell. What stands between backticks is bold. Lines are broken at spaces.
std::string roffText(std::string_view text);

/// The same for text that is bold as a whole, or an example; backticks are themselves.
std::string roffLiteral(std::string_view text);

/// A usage as manual pages set it: what is typed as it stands bold, what stands for something ("FILE") italic.
std::string roffUsage(std::string_view usage);

/// One manual page of section 1, from top to bottom.
class RoffPage {
 public:
  struct Title {
    std::string name;    ///< "quorvane-scan"
    std::string date;    ///< "2026-11-21"
    std::string source;  ///< program and version
  };
  explicit RoffPage(const Title& title);

  void section(std::string_view title);
  /// Lines as they are.
  void example(std::string_view text);

  /// The arguments of these are roff already.
  void line(std::string_view roff);
  void paragraph(std::string_view roff);
  /// A tag, and behind it what it means.
  void tagged(std::string_view tag, std::string_view roff);
  /// What follows until `outdent` stands to the right of what was tagged last.
  void indent() { line(".RS"); }
  void outdent() { line(".RE"); }

  std::string text() && { return std::move(text_); }

 private:
  void separate();

  std::string text_;
  bool isAtSection_ = false;
};

}  // namespace quorvane
