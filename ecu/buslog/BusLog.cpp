// SPDX-License-Identifier: MIT
#include "ecu/buslog/BusLog.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/Failure.h"

namespace korval::ecu {
namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;

std::string TimeText(std::chrono::microseconds time) {
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "(%lld.%06lld) ",
                static_cast<long long>(time.count() / kMicrosecondsPerSecond),
                static_cast<long long>(time.count() % kMicrosecondsPerSecond));
  return text.data();
}

std::string IdentifierText(const CanIdentifier& identifier) {
  std::array<char, 12> text{};
  std::snprintf(text.data(), text.size(), identifier.extended ? "%08X" : "%03X", identifier.number);
  return text.data();
}

std::string SpacedHex(base::ByteView bytes) {
  std::string text;
  for (const std::uint8_t& byte : bytes) text += ' ' + base::HexText({&byte, 1});
  return text;
}

}  // namespace

std::chrono::microseconds SystemTime() {
  return std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::system_clock::now().time_since_epoch());
}

BusLog::BusLog(Settings settings) : settings_(std::move(settings)) {
  std::error_code unknown;
  if (std::filesystem::is_fifo(settings_.path, unknown)) {
    throw base::Failure(
        "Bus trace " + settings_.path +
        " is a pipe, and a reader that pauses would hold up the bus: name a file (tail -f shows it)");
  }
  Open();
  if (!file_) {
    throw base::Failure("Bus trace " + settings_.path +
                        " cannot be written: check that its folder exists, and the access rights");
  }
}

void BusLog::Open() {
  file_.open(settings_.path, std::ios::binary | std::ios::app);
  std::error_code unknown;
  const std::uintmax_t size = std::filesystem::file_size(settings_.path, unknown);
  size_ = unknown ? 0 : static_cast<std::size_t>(size);
}

void BusLog::Rotate() {
  file_.close();
  std::error_code refused;
  std::filesystem::rename(settings_.path, settings_.path + ".1", refused);
  if (refused) return GiveUp("it cannot be renamed to make room: " + refused.message());
  Open();
  if (!file_) GiveUp("it cannot be begun anew: check the access rights of its folder");
}

void BusLog::Record(const std::string& bus, Direction direction, const CanFrame& frame) {
  Write(bus, IdentifierText(frame.identifier) + '#' + base::HexText(frame.Bytes()) + ' ' +
                 static_cast<char>(direction));
}

void BusLog::Record(const std::string& line, Direction direction, base::ByteView bytes) {
  Write(line, static_cast<char>(direction) + SpacedHex(bytes));
}

void BusLog::RecordLevel(const std::string& line, bool low) {
  Write(line, std::string(1, static_cast<char>(Direction::kSent)) + (low ? " low" : " high"));
}

void BusLog::Write(const std::string& bus, const std::string& rest) {
  if (!file_.is_open()) return;
  const std::string line = TimeText(settings_.now()) + bus + ' ' + rest + '\n';
  if (size_ > 0 && size_ + line.size() > settings_.limit) Rotate();
  if (!file_.is_open()) return;
  file_ << line << std::flush;
  if (!file_) return GiveUp("is the disk full?");
  size_ += line.size();
}

// The traffic goes on without its record.
void BusLog::GiveUp(const std::string& why) {
  file_.close();
  if (settings_.on_trouble) {
    settings_.on_trouble("Bus trace " + settings_.path + " has ended: " + why);
  }
}

}  // namespace korval::ecu
