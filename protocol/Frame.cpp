// SPDX-License-Identifier: MIT
#include "protocol/Frame.h"

namespace korval::protocol {
namespace {

constexpr std::size_t kLengthBytes = 2;

std::uint16_t SumOfWords(const base::ByteBuffer& frame, std::size_t end) {
  std::uint32_t sum = 0;
  const base::ByteView bytes = frame.View(0, end);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    sum += static_cast<std::uint32_t>(bytes[i] << 8 | bytes[i + 1]);
  }
  return static_cast<std::uint16_t>(sum);
}

}  // namespace

bool IsFrameLength(std::size_t length) { return length >= kShortestFrame && length % 2 == 0; }

bool IsIncomplete(base::ByteView bytes) { return bytes.size() < kLengthBytes || MissingBytes(bytes) > 0; }

std::size_t MissingBytes(base::ByteView bytes) {
  if (bytes.size() < kLengthBytes) return 0;
  const std::size_t length = static_cast<std::size_t>(bytes[0]) << 8U | bytes[1];
  return IsFrameLength(length) && length > bytes.size() ? length - bytes.size() : 0;
}

bool IsChecksumValid(const base::ByteBuffer& frame) {
  const std::size_t checksum_offset = frame.Word(kLengthOffset) - std::size_t{2};
  return SumOfWords(frame, checksum_offset) == frame.Word(checksum_offset);
}

base::ByteView ParameterArea(const base::ByteBuffer& frame) {
  return frame.View(kStatusOffset, frame.Word(kLengthOffset) - kShortestFrame);
}

void FinishReply(base::ByteBuffer& frame, std::uint16_t code, std::int32_t status,
                 const base::ByteBuffer& data) {
  frame.SetLength(kShortestFrame);
  frame.SetWord(kLengthOffset, static_cast<std::uint16_t>(data.Length() + 8));
  frame.SetWord(kCommandOffset, code);
  frame.SetWord(kStatusOffset, static_cast<std::uint16_t>(status));
  frame.Append(data.View());
  const std::uint16_t checksum = SumOfWords(frame, frame.Length());
  frame.SetLength(frame.Length() + 2);
  frame.SetWord(frame.Length() - 2, checksum);
}

}  // namespace korval::protocol
