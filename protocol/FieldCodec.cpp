// SPDX-License-Identifier: MIT
#include "protocol/FieldCodec.h"

#include <algorithm>
#include <array>
#include <bit>

#include "base/AnsiText.h"
#include "base/Failure.h"

namespace korval::protocol {
namespace {

// Takes `count` bytes at the position, without moving it.
base::ByteView Take(base::ByteView area, std::size_t position, std::size_t count) {
  if (position > area.size() || count > area.size() - position) {
    throw base::Failure("the request ends " + std::to_string(count) + " bytes short of a field at offset " +
                        std::to_string(position));
  }
  return area.subspan(position, count);
}

template <typename Unsigned>
Unsigned ReadBigEndian(base::ByteView area, std::size_t& position) {
  Unsigned value = 0;
  for (const std::uint8_t byte : Take(area, position, sizeof(Unsigned))) {
    value = static_cast<Unsigned>((value << 8) | byte);
  }
  position += sizeof(Unsigned);
  return value;
}

template <typename Unsigned>
void AppendBigEndian(base::ByteBuffer& reply, Unsigned value) {
  std::array<std::uint8_t, sizeof(Unsigned)> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(value >> (8 * (bytes.size() - 1 - i)));
  }
  reply.Append(base::ByteView(bytes));
}

}  // namespace

std::int32_t ReadWord(base::ByteView area, std::size_t& position) {
  return ReadBigEndian<std::uint16_t>(area, position);
}

float ReadReal(base::ByteView area, std::size_t& position) {
  return std::bit_cast<float>(ReadBigEndian<std::uint32_t>(area, position));
}

double ReadReal8(base::ByteView area, std::size_t& position) {
  return std::bit_cast<double>(ReadBigEndian<std::uint64_t>(area, position));
}

std::string ReadString(base::ByteView area, std::size_t& position) {
  std::size_t characters = position;
  const auto count = static_cast<std::size_t>(ReadWord(area, characters));
  std::string text = base::Utf8FromAnsi(Take(area, characters, count + count % 2).first(count));
  position = characters + count + count % 2;
  return text;
}

void AppendWord(base::ByteBuffer& reply, std::int32_t value) {
  AppendBigEndian(reply, static_cast<std::uint16_t>(value));
}

void AppendReal(base::ByteBuffer& reply, float value) {
  AppendBigEndian(reply, std::bit_cast<std::uint32_t>(value));
}

void AppendReal8(base::ByteBuffer& reply, double value) {
  AppendBigEndian(reply, std::bit_cast<std::uint64_t>(value));
}

void AppendString(base::ByteBuffer& reply, std::string_view text) {
  const base::ByteBuffer ansi = base::AnsiFromUtf8(text);
  const std::size_t count = std::min(ansi.Length(), kMaxStringLength);
  AppendWord(reply, static_cast<std::int32_t>(count));
  reply.Append(ansi.View(0, count));
  if (count % 2 != 0) reply.Append(std::uint8_t{0});
}

}  // namespace korval::protocol
