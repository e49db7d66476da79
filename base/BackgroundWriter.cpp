// SPDX-License-Identifier: MIT
#include "base/BackgroundWriter.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace korval::base {
namespace {

// What is handed over at once, so that progress is seen.
constexpr std::size_t kPiece = std::size_t{16} * 1024;

}  // namespace

struct BackgroundWriter::State {
  explicit State(Settings given) : settings(std::move(given)) {}

  const Settings settings;
  std::mutex mutex;  // guards what follows
  std::condition_variable changed;
  std::string pending;
  std::size_t dropped_lines = 0;
  std::size_t pieces_written = 0;
  bool finishing = false;
  bool ended = false;
  bool left_behind = false;
};

BackgroundWriter::BackgroundWriter(Settings settings)
    : state_(std::make_shared<State>(std::move(settings))), thread_([state = state_] { Run(*state); }) {}

BackgroundWriter::~BackgroundWriter() { Finish(); }

void BackgroundWriter::Append(std::string_view text) {
  const std::lock_guard lock(state_->mutex);
  if (state_->finishing || state_->ended) return;
  // Once something is missing, nothing may come before the sentence that says so.
  if (state_->dropped_lines > 0 || state_->pending.size() + text.size() > state_->settings.limit) {
    state_->dropped_lines += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  } else {
    state_->pending += text;
  }
  state_->changed.notify_all();
}

void BackgroundWriter::Finish() {
  if (!thread_.joinable()) return;
  std::unique_lock lock(state_->mutex);
  state_->finishing = true;
  state_->changed.notify_all();
  const auto end = std::chrono::steady_clock::now() + kLongestFinish;
  bool goes_on = true;
  while (!state_->ended && goes_on) {
    const std::size_t before = state_->pieces_written;
    goes_on = state_->changed.wait_until(
        lock, std::min(end, std::chrono::steady_clock::now() + state_->settings.patience),
        [&] { return state_->ended || state_->pieces_written != before; });
  }
  if (state_->ended) {
    lock.unlock();
    thread_.join();
  } else {
    state_->left_behind = true;
    thread_.detach();
  }
}

void BackgroundWriter::Run(State& state) {
  std::error_code failure;
  std::unique_lock lock(state.mutex);
  while (!failure) {
    const auto has_text = [&] { return !state.pending.empty() || state.dropped_lines > 0; };
    state.changed.wait(lock, [&] { return has_text() || state.finishing; });
    if (!has_text()) break;
    std::string text = std::exchange(state.pending, {});
    if (const std::size_t lines = std::exchange(state.dropped_lines, 0); lines > 0) {
      text += state.settings.dropped(lines);
    }
    for (std::size_t at = 0; at < text.size() && !failure; at += kPiece) {
      lock.unlock();
      failure = state.settings.write(std::string_view(text).substr(at, kPiece));
      lock.lock();
      ++state.pieces_written;
      state.changed.notify_all();
    }
  }
  state.ended = true;
  state.changed.notify_all();
  const bool is_told = failure && !state.left_behind;
  lock.unlock();
  if (is_told && state.settings.on_failure) state.settings.on_failure(failure);
}

}  // namespace korval::base
