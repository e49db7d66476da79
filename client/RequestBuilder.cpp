// SPDX-License-Identifier: MIT
#include "client/RequestBuilder.h"

#include <bit>
#include <string>

#include "base/AnsiText.h"
#include "base/Failure.h"

namespace korval::client {
namespace {

constexpr std::size_t kLongestFrame = 65534;

}  // namespace

RequestBuilder::RequestBuilder(std::uint16_t command) {
  Append(0, 2);  // the length, known at the end
  Append(command, 2);
}

void RequestBuilder::Append(std::uint64_t value, int bytes) {
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
    frame_.Append(static_cast<std::uint8_t>(value >> shift));
  }
}

RequestBuilder& RequestBuilder::Word(std::int64_t value) {
  if (value < 0 || value > 0xFFFF)
    throw base::Failure(std::to_string(value) + " is no number from 0 to 65535");
  Append(static_cast<std::uint64_t>(value), 2);
  return *this;
}

RequestBuilder& RequestBuilder::Real(float value) {
  Append(std::bit_cast<std::uint32_t>(value), 4);
  return *this;
}

RequestBuilder& RequestBuilder::Real8(double value) {
  Append(std::bit_cast<std::uint64_t>(value), 8);
  return *this;
}

RequestBuilder& RequestBuilder::String(std::string_view text) {
  const base::ByteBuffer ansi = base::AnsiFromUtf8(text);
  Word(static_cast<std::int64_t>(ansi.Length()));
  frame_.Append(ansi.View());
  if (ansi.Length() % 2 != 0) Append(0, 1);
  return *this;
}

base::ByteBuffer RequestBuilder::Frame() const {
  const std::size_t length = frame_.Length() + 2;
  if (length > kLongestFrame) {
    throw base::Failure("The request has " + std::to_string(length) + " bytes, a frame at most " +
                        std::to_string(kLongestFrame));
  }
  base::ByteBuffer frame = frame_;
  frame.SetLength(length);
  frame.SetWord(0, static_cast<std::uint16_t>(length));
  std::uint32_t sum = 0;
  for (std::size_t offset = 0; offset < length - 2; offset += 2) sum += frame.Word(offset);
  frame.SetWord(length - 2, static_cast<std::uint16_t>(sum));
  return frame;
}

}  // namespace korval::client
