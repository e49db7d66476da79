// SPDX-License-Identifier: MIT
#include "client/ReplyReader.h"

#include <bit>
#include <utility>

#include "base/AnsiText.h"
#include "client/ClientErrors.h"

namespace korval::client {
namespace {

constexpr std::size_t kShortestReply = 8;
constexpr std::uint16_t kBusyCommand = 115;

void RequireWhole(const base::ByteBuffer& frame) {
  if (frame.Length() < kShortestReply || frame.Length() % 2 != 0 || frame.Word(0) != frame.Length()) {
    throw LinkError("The answer " + frame.ToHex() + " is no reply frame: its length does not hold");
  }
  std::uint32_t sum = 0;
  for (std::size_t offset = 0; offset < frame.Length() - 2; offset += 2) sum += frame.Word(offset);
  if (static_cast<std::uint16_t>(sum) != frame.Word(frame.Length() - 2)) {
    throw LinkError("The answer " + frame.ToHex() + " is damaged: its checksum does not hold");
  }
}

}  // namespace

std::string StatusText(std::uint16_t status) {
  switch (status) {
    case kStatusSuccess:
      return "success";
    case kStatusError:
      return "failed without a message";
    case kStatusNotProcessed:
      return "refused in this session state";
    case kStatusUnknownCommand:
      return "unknown command";
    default:
      return "status " + std::to_string(status);
  }
}

ReplyReader::ReplyReader(base::ByteBuffer frame) : frame_(std::move(frame)) { RequireWhole(frame_); }

void ReplyReader::RequireAnswerTo(std::uint16_t command) const {
  const bool is_busy = Command() == kBusyCommand && Status() == kStatusError;
  if (Command() == command || is_busy) return;
  throw LinkError("The answer " + frame_.ToHex() + " belongs to command " + std::to_string(Command()) +
                  ", not to command " + std::to_string(command));
}

void ReplyReader::RequireSuccess() {
  const std::uint16_t status = Status();
  if (status == kStatusSuccess) return;
  if (status != kStatusError || Remaining() == 0) throw ErrorReply(status, status, StatusText(status));
  const std::uint16_t code = Word();
  throw ErrorReply(status, code, String());
}

base::ByteView ReplyReader::Take(std::size_t count) {
  if (count > Remaining()) {
    throw LinkError("The answer " + frame_.ToHex() + " ends inside its field at offset " +
                    std::to_string(position_));
  }
  position_ += count;
  return frame_.View(position_ - count, count);
}

std::uint64_t ReplyReader::Unsigned(std::size_t bytes) {
  std::uint64_t value = 0;
  for (const std::uint8_t byte : Take(bytes)) value = (value << 8) | byte;
  return value;
}

std::uint16_t ReplyReader::Word() { return static_cast<std::uint16_t>(Unsigned(2)); }

float ReplyReader::Real() { return std::bit_cast<float>(static_cast<std::uint32_t>(Unsigned(4))); }

double ReplyReader::Real8() { return std::bit_cast<double>(Unsigned(8)); }

std::string ReplyReader::String() {
  const std::size_t count = Word();
  std::string text = base::Utf8FromAnsi(Take(count));
  if (count % 2 != 0) Take(1);
  return text;
}

}  // namespace korval::client
