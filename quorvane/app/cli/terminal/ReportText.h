#pragma once

#include "quorvane/app/cli/terminal/OutputChannel.h"
#include "quorvane/app/messages/MessageCatalogue.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// How a report is to read.
struct ReportStyle {
  const MessageCatalogue& catalogue;
  std::optional<FilePath> home;  ///< paths in it are shown with "~"
  TextStyle text;

  MessageStyle messages() const { return {home, text.characters}; }
};

/// A text for people that grows line by line. Laid out, no line is longer than the terminal is wide; plain, lines are
/// neither broken nor shortened nor indented.
class ReportText {
 public:
  explicit ReportText(const ReportStyle& style) : style_(style) {}

  std::string say(const Message& message) const { return style_.catalogue.text(message, style_.messages()); }
  std::string path(const FilePath& path) const { return MessageCatalogue::pathText(path, style_.messages()); }

  /// The message, wrapped behind `indent`; further lines begin `hanging` more to the right.
  void line(const Message& message, std::size_t indent = 0, std::size_t hanging = 0) {
    words(say(message), indent, hanging);
  }
  /// The same with a harmless text.
  void words(const std::string& text, std::size_t indent = 0, std::size_t hanging = 0);
  /// One line, shortened in its middle where it would be too long.
  void fitted(const std::string& text, std::size_t indent);
  /// The text behind its title, which takes `titleColumns`, or below it where that leaves little room. Plain:
  /// "title: text".
  void row(const std::string& title, const std::string& text, std::size_t titleColumns);
  /// An amount as the first of such facts: laid out, all of them end at one column.
  std::string amount(std::int64_t bytes) const;
  /// Facts about one thing. Laid out they stand behind each other with two spaces between, the last one shortened to
  /// fit; plain with tabs between.
  void facts(const std::vector<std::string>& facts);
  /// A line as it is.
  void asIs(const std::string& text) { text_ += text; }
  void heading(const std::string& text);
  void blank() { text_ += "\n"; }

  bool isEmpty() const { return text_.empty(); }
  std::size_t size() const { return text_.size(); }
  std::string take() { return std::move(text_); }

 private:
  const ReportStyle& style_;
  std::string text_;
};

}  // namespace quorvane
