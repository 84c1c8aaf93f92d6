#pragma once

#include "quorvane/app/cli/terminal/OutputChannel.h"
#include "quorvane/core/SafetyLevel.h"

#include <cstddef>
#include <string>
#include <vector>

namespace quorvane {

/// One item of a scan in words; all texts are harmless.
struct ScanRow {
  std::string number = {};  ///< what a person calls it by; empty in a table without numbers
  bool isSelected = false;
  std::string selectedText;  ///< in words
  std::string size;
  std::string name;
  SafetyLevel safety = SafetyLevel::blocked;
  std::string safetyTitle;
  std::string reason;
  std::string path;
};

/// How many columns each part of a row takes.
struct ScanColumns {
  std::size_t number = 0;  ///< 0: there is no such column
  std::size_t size = 0;
  std::size_t name = 0;
  std::size_t safety = 0;
  std::size_t reason = 0;
  std::size_t path = 0;        ///< 0: there is no room for it
  bool isReasonBelow = false;  ///< it stands on lines of its own
  bool isStacked = false;      ///< and so does the name

  bool operator==(const ScanColumns&) const = default;
};

/// Divides the width of the terminal among the parts: names are shortened and reasons wrapped to fit; where there is
/// much room the path stands behind them, and where there is little the reason, or the name too, stands below.
ScanColumns scanColumns(const std::vector<ScanRow>& rows, const TextStyle& style);

/// The row in one line, or more where its reason is wrapped. Plain it is always one line of all its facts.
std::string rowText(const ScanRow& row, const ScanColumns& columns, const TextStyle& style);

}  // namespace quorvane
