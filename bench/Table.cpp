// SPDX-License-Identifier: MIT
#include "bench/Table.h"

#include <algorithm>
#include <cstdio>

namespace korval::bench {
namespace {

// Characters, not bytes: a UTF-8 continuation byte takes no column.
std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

}  // namespace

double Median(std::vector<double> samples) {
  const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
  std::nth_element(samples.begin(), middle, samples.end());
  return *middle;
}

std::string Fixed(double value, int digits) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

void PrintTable(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
  }
  bool heading = true;
  for (const auto& row : rows) {
    std::string line = "|";
    for (std::size_t i = 0; i < row.size(); ++i)
      line += " " + row[i] + std::string(widths[i] - Width(row[i]), ' ') + " |";
    std::puts(line.c_str());
    if (!heading) continue;
    heading = false;
    line = "|";
    for (const std::size_t width : widths) line += std::string(width + 2, '-') + "|";
    std::puts(line.c_str());
  }
}

bool Judge(const std::string& what, double measured, double limit, const std::string& unit) {
  const bool kept = measured <= limit;
  std::printf("%s %s: %s%s (limit %s%s)\n", kept ? "kept  " : "MISSED", what.c_str(),
              Fixed(measured, 2).c_str(), unit.c_str(), Fixed(limit, 2).c_str(), unit.c_str());
  return kept;
}

}  // namespace korval::bench
