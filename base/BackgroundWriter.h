// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

namespace korval::base {

/// Writes text in order on a thread of its own, so that whoever has something to say never waits for a slow
/// disk or a reader that has paused. What does not fit into its memory is dropped, and a sentence says so in
/// its place.
class BackgroundWriter {
 public:
  struct Settings {
    /// Writes a whole text, however long that takes; the error that ended it, if any. Runs on the writer's
    /// thread, and may still do so when the writer itself has gone: what it stands on it holds itself.
    std::function<std::error_code(std::string_view)> write;
    /// Told once, on the writer's thread and before Finish ends, why nothing more is written. May be empty.
    std::function<void(std::error_code)> on_failure;
    /// What is written in place of so many lines that were dropped.
    std::function<std::string(std::size_t lines)> dropped;
    /// Bytes that may wait, beside as many that are being written.
    std::size_t limit = std::size_t{4} * 1024 * 1024;
    /// Finish waits no longer than this for a piece of the text to be taken ...
    std::chrono::milliseconds patience{2000};
  };
  /// ... and no longer than this for the whole.
  static constexpr std::chrono::milliseconds kLongestFinish{10000};

  explicit BackgroundWriter(Settings settings);
  ~BackgroundWriter();
  BackgroundWriter(const BackgroundWriter&) = delete;
  BackgroundWriter& operator=(const BackgroundWriter&) = delete;

  void Append(std::string_view text);
  /// Writes what waits as far as it is taken, then ends the thread or, where that hangs, leaves it behind.
  /// What is appended afterwards goes nowhere.
  void Finish();

 private:
  struct State;

  static void Run(State& state);

  std::shared_ptr<State> state_;
  std::thread thread_;
};

}  // namespace korval::base
