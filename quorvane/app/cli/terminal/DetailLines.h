#pragma once

#include "quorvane/app/cli/terminal/ReportText.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvane {

/// "Title  value" one below the other, the values in one column.
class DetailLines {
 public:
  explicit DetailLines(const ReportStyle& style) : style_(style) {}

  void add(std::string_view titleKey, MessageValue value);
  void writeTo(ReportText& text) const;

 private:
  const ReportStyle& style_;
  std::vector<std::pair<std::string, std::string>> lines_;
};

}  // namespace quorvane
