// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace korval::bench {

/// Folders of the examples.
std::string ExampleDescriptions();
std::string ExampleEcuFiles();

/// Item `index` of a generated file, also its short name.
std::string ItemName(int index);

/// A description file whose section BENCH names the first `items` items of the ECU file "bench.xml".
std::string DescriptionFile(int items);

/// An ECU file with `items` scaled values of 16 bits, `per_request` to a request. On the simulated ECU
/// `moving` of them follow a sine. Each item takes some 200 bytes, as in files that are written by tools.
std::string EcuFile(int items, int per_request, int moving);

}  // namespace korval::bench
