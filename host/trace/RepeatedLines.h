// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/EventLoop.h"

namespace korval::host {

/// Keeps what causes the same trace lines again and again - a client's flood of damaged frames, a serial line
/// at the wrong speed - from filling the disk: after some hundred repetitions they are only counted. The
/// count is written when something else happens or the repetitions pause, and once a minute while they go on.
class RepeatedLines {
 public:
  using Sink = std::function<void(std::string_view)>;

  /// Repetitions that are written as they are. Each second gives back one of them, and more different lines
  /// than take turns give back all.
  static constexpr std::size_t kWritten = 200;
  /// Different lines that may take turns.
  static constexpr std::size_t kTakingTurns = 4;
  static constexpr std::chrono::seconds kPause{1};
  static constexpr std::chrono::seconds kLongestSilence{60};

  /// The loop outlives this.
  RepeatedLines(base::EventLoop& loop, Sink sink);

  /// Takes a piece of the trace, usually a whole line; the beginning of one waits for its line end.
  void Append(std::string_view piece);
  /// Writes what has only been counted so far, and the beginning of a line.
  void Finish();

 private:
  struct Line {
    std::string text;
    std::size_t counted = 0;
  };

  void AppendLine(const std::string& text);
  bool MayBeWritten();
  void Count(Line& line);
  void WriteCounts();

  base::EventLoop& loop_;
  Sink sink_;
  std::unique_ptr<base::Timer> pause_;
  std::string beginning_;
  std::vector<Line> lines_;  // that take turns
  std::size_t left_ = kWritten;
  base::TimePoint left_since_{};
  base::TimePoint counting_since_{};
  bool counting_ = false;
};

}  // namespace korval::host
