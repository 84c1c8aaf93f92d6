#include "quorvane/app/cli/terminal/DetailLines.h"

#include "quorvane/app/messages/TextLayout.h"

#include <algorithm>

namespace quorvane {

void DetailLines::add(std::string_view titleKey, MessageValue value) {
  const Message content{"cli.detail.value", {{"value", std::move(value)}}};
  lines_.emplace_back(style_.catalogue.text(titleKey), style_.catalogue.text(content, style_.messages()));
}

void DetailLines::writeTo(ReportText& text) const {
  std::size_t width = 0;
  for (const auto& [title, value] : lines_) width = std::max(width, displayWidth(title));
  for (const auto& [title, value] : lines_) text.row(title, value, width);
}

}  // namespace quorvane
