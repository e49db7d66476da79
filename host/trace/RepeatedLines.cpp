// SPDX-License-Identifier: MIT
#include "host/trace/RepeatedLines.h"

#include <algorithm>
#include <utility>

namespace korval::host {
namespace {

constexpr std::size_t kLongestQuotation = 120;

// The line without its end, and of a very long one the beginning.
std::string Quotation(std::string text) {
  text.erase(text.find_last_not_of("\r\n") + 1);
  if (text.size() <= kLongestQuotation) return text;
  std::size_t end = kLongestQuotation;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return text.substr(0, end) + " ...";
}

std::string TimesText(std::size_t times) { return times == 1 ? "once" : std::to_string(times) + " times"; }

}  // namespace

RepeatedLines::RepeatedLines(base::EventLoop& loop, Sink sink)
    : loop_(loop),
      sink_(std::move(sink)),
      pause_(loop.CreateTimer([this] { WriteCounts(); })),
      left_since_(loop.Now()) {}

void RepeatedLines::Append(std::string_view piece) {
  beginning_ += piece;
  if (beginning_.ends_with('\n')) AppendLine(std::exchange(beginning_, {}));
}

void RepeatedLines::Finish() {
  WriteCounts();
  if (!beginning_.empty()) sink_(std::exchange(beginning_, {}));
}

void RepeatedLines::AppendLine(const std::string& text) {
  const auto known =
      std::find_if(lines_.begin(), lines_.end(), [&](const Line& line) { return line.text == text; });
  if (known == lines_.end()) {
    WriteCounts();
    if (lines_.size() == kTakingTurns) {
      lines_.clear();
      left_ = kWritten;
    }
    lines_.push_back({text});
    sink_(text);
  } else if (MayBeWritten()) {
    sink_(text);
  } else {
    Count(*known);
  }
  if (counting_) pause_->Start(kPause);
}

bool RepeatedLines::MayBeWritten() {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(loop_.Now() - left_since_);
  left_since_ += seconds;
  left_ = std::min(kWritten, left_ + static_cast<std::size_t>(seconds.count()));
  if (left_ == 0) return false;
  --left_;
  return true;
}

void RepeatedLines::Count(Line& line) {
  if (!std::exchange(counting_, true)) counting_since_ = loop_.Now();
  ++line.counted;
  if (loop_.Now() - counting_since_ >= kLongestSilence) WriteCounts();
}

void RepeatedLines::WriteCounts() {
  if (!std::exchange(counting_, false)) return;
  pause_->Stop();
  for (Line& line : lines_) {
    if (const std::size_t times = std::exchange(line.counted, 0); times > 0)
      sink_("(repeated " + TimesText(times) + ": " + Quotation(line.text) + ")\r\n");
  }
}

}  // namespace korval::host
