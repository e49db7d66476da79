// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace korval::apps {

/// The forms in which readings of the same values are shown, line by line and without line ends. A reading
/// has the time since the first one, and a value or none for each name.
class ValueTable {
 public:
  using Values = std::vector<std::optional<float>>;

  explicit ValueTable(std::vector<std::string> names) : names_(std::move(names)) {}

  /// Columns wide enough for the names and most numbers.
  std::string TextHeader() const;
  std::string TextRow(std::chrono::milliseconds time, const Values& values) const;
  /// Comma-separated (RFC 4180); the field of an item without a value is empty.
  std::string CsvHeader() const;
  std::string CsvRow(std::chrono::milliseconds time, const Values& values) const;
  std::string JsonRow(std::chrono::milliseconds time, const Values& values) const;

 private:
  std::vector<std::string> names_;
};

}  // namespace korval::apps
