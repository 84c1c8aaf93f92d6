#pragma once

#include "quorvane/app/cli/terminal/Console.h"
#include "quorvane/scan/ScanProgress.h"

#include <string>

namespace quorvane {

/// One line about a running scan, exactly `style.columns` wide or less: how far it is where that is known, never the
/// whole; what it does, how many entries it has seen, and the place it looks at in the room that is left.
std::string progressLine(const CleaningScanProgressUpdate& update, const MessageCatalogue& catalogue,
                         const MessageStyle& messages, const TextStyle& style);

/// Draws that line over itself at the bottom of the error channel, and takes it away at the end. It never goes back.
/// Draws nothing without a terminal, on one that cannot redraw, or when the run is to be quiet.
class ProgressBar {
 public:
  explicit ProgressBar(Console& console);
  ~ProgressBar() { clear(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void show(const CleaningScanProgressUpdate& update);
  void clear();
  /// Takes the line away, and with it the "^C" that the terminal has shown: below it where it cannot be drawn over.
  void interrupt();

 private:
  Console& console_;
  const bool isDrawn_;
  bool isVisible_ = false;
  double furthest_ = 0;
};

}  // namespace quorvane
