// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Variant.h"

namespace korval::asap3 {

/// Prints results: "name = value" lines, or with --json one object a line with the same names. Each result is
/// flushed, so that a pipe sees it at once.
class Output {
 public:
  using Field = std::pair<std::string, base::Variant>;  // an Empty value is "no value", null in JSON
  using Fields = std::vector<Field>;

  explicit Output(bool json) : json_(json) {}

  /// One line a field; in JSON one object with all of them.
  void Values(const Fields& fields) const;
  /// One line with all fields, for readings and table rows.
  void Row(const Fields& fields) const;
  /// An error reply, on standard error: {"error":{"status":S,"code":C,"message":"..."}} in JSON.
  void Error(std::uint16_t status, std::int32_t code, const std::string& message) const;

 private:
  bool json_;
};

/// Readings as comma-separated values, with a line of names first. Raises std::runtime_error when the file
/// cannot be written.
class CsvFile {
 public:
  CsvFile(const std::string& path, const std::vector<std::string>& names);
  void Write(const Output::Fields& fields);

 private:
  void WriteLine(const std::vector<std::string>& cells);

  std::string path_;
  std::ofstream file_;
};

}  // namespace korval::asap3
