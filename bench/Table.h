// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace korval::bench {

/// The middle one of the samples.
double Median(std::vector<double> samples);

/// A number with `digits` behind the decimal point.
std::string Fixed(double value, int digits);

/// Prints the rows as a Markdown table; the first row is the heading.
void PrintTable(const std::vector<std::vector<std::string>>& rows);

/// Says on one line what was measured and whether it keeps the limit; false when it does not.
bool Judge(const std::string& what, double measured, double limit, const std::string& unit);

}  // namespace korval::bench
