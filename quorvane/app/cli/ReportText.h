#pragma once

#include "quorvane/app/cli/OutputChannel.h"
#include "quorvane/app/messages/MessageCatalogue.h"

#include <cstddef>
#include <optional>
#include <string>

namespace quorvane {

/// How a report is to read.
struct ReportStyle {
  const MessageCatalogue& catalogue;
  std::optional<FilePath> home;  ///< paths in it are shown with "~"
  TextStyle text;

  MessageStyle messages() const { return {home, text.characters}; }
};

/// A text for people that grows line by line. On a terminal no line is longer than it is wide.
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
