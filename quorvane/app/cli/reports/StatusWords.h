#pragma once

#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/health/HealthScore.h"
#include "quorvane/health/ProcessOrder.h"

#include <array>
#include <string>

namespace quorvane {

/// The words and amounts of the machine's status.
class StatusWords {
 public:
  explicit StatusWords(const ReportStyle& style) : style_(style) {}

  std::string healthTitle() const;
  std::string title(SystemStatusInput input) const;
  /// "92 of 100, healthy"
  std::string score(const HealthScore& health) const;
  /// The system and how long it has been running.
  std::string machine(const SystemStatusSnapshot& snapshot) const;

  std::string percent(double percent) const;
  std::string processors(const SystemStatusSnapshot& snapshot) const;
  std::string memory(const SystemStatusSnapshot& snapshot) const;
  std::string disk(const SystemStatusSnapshot& snapshot) const;
  std::string network(const SystemStatusSnapshot& snapshot) const;
  std::string battery(const SystemStatusSnapshot& snapshot) const;
  std::string thermal(SystemThermalLevel level) const;
  std::string notMeasured() const;

  Message notMeasured(const std::vector<SystemStatusInput>& inputs) const;
  Message deduction(const HealthDeduction& deduction, const SystemStatusSnapshot& snapshot,
                    const std::string& points) const;

  std::string amountOfMemory(std::int64_t bytes) const;
  std::string harmless(const std::string& foreign) const;
  /// Of the columns of the process table.
  std::array<std::string, 4> processHeads() const;

 private:
  std::string say(const Message& message) const { return style_.catalogue.text(message, style_.messages()); }
  std::string duration(double seconds) const;
  std::string rate(double bytesPerSecond) const;

  const ReportStyle& style_;
};

}  // namespace quorvane
