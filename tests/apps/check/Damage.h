// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/check/CheckedFile.h"

namespace korval::tests {

/// One mistake in a file that is right otherwise, and the one finding that it gives.
struct Damage {
  const char* shows;  ///< the test's name
  std::string_view right;
  std::string_view wrong;
  std::size_t line;
  const char* sentence;  ///< part of it
};

inline void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.wrong; }

inline std::string NameOf(const ::testing::TestParamInfo<Damage>& damage) { return damage.param.shows; }

/// The text with its first `right` made wrong.
inline std::string Damaged(std::string_view text, const Damage& damage) {
  std::string damaged(text);
  const std::size_t place = damaged.find(damage.right);
  if (place == std::string::npos) {
    ADD_FAILURE() << "the text has no " << damage.right;
    return damaged;
  }
  return damaged.replace(place, damage.right.size(), damage.wrong);
}

inline void ExpectOnly(const std::vector<apps::Finding>& findings, const Damage& damage) {
  ASSERT_EQ(findings.size(), 1U) << (findings.empty() ? "nothing found" : findings.back().sentence);
  EXPECT_EQ(findings.front().line, damage.line) << findings.front().sentence;
  EXPECT_THAT(findings.front().sentence, ::testing::HasSubstr(damage.sentence));
}

}  // namespace korval::tests
