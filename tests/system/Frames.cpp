// SPDX-License-Identifier: MIT
#include "tests/system/Frames.h"

#include <bit>
#include <cctype>

namespace korval::tests {
namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

std::string BigEndian(std::uint64_t value, int width) {
  std::string bytes;
  for (int shift = (width - 1) * 8; shift >= 0; shift -= 8)
    bytes.push_back(static_cast<char>(static_cast<unsigned char>(value >> shift)));
  return bytes;
}

unsigned ByteAt(std::string_view bytes, std::size_t offset) {
  return static_cast<unsigned char>(bytes.at(offset));
}

}  // namespace

const std::string kGlobalError = FromHex("0018 0073 FFFF 0001 000C 476C6F62616C206572726F72 1B1A");

std::string FromHex(std::string_view text) {
  std::string digits;
  for (const char character : text)
    if (std::isxdigit(static_cast<unsigned char>(character)) != 0) digits.push_back(character);
  std::string bytes;
  for (std::size_t at = 0; at + 1 < digits.size(); at += 2)
    bytes.push_back(
        static_cast<char>(static_cast<unsigned char>(std::stoul(digits.substr(at, 2), nullptr, 16))));
  return bytes;
}

std::string Hex(std::string_view bytes) {
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    text.push_back(kHexDigits[ByteAt(bytes, at) / 16]);
    text.push_back(kHexDigits[ByteAt(bytes, at) % 16]);
  }
  return text;
}

std::string Word(unsigned value) { return BigEndian(value, 2); }
std::string Real(float value) { return BigEndian(std::bit_cast<std::uint32_t>(value), 4); }
std::string Real8(double value) { return BigEndian(std::bit_cast<std::uint64_t>(value), 8); }

std::string Text(std::string_view characters) {
  std::string field = Word(static_cast<unsigned>(characters.size()));
  field += characters;
  if (characters.size() % 2 != 0) field.push_back('\0');
  return field;
}

std::string FourReals(float value) { return Real(value) + Real(value) + Real(value) + Real(0); }
std::string FourReals8(double value) { return Real8(value) + Real8(value) + Real8(value) + Real8(0); }

std::string Checksum(std::string_view bytes) {
  unsigned sum = 0;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) sum += WordAt(bytes, at);
  return Word(sum & 0xFFFFU);
}

std::string Framed(std::string_view content) {
  std::string frame = Word(static_cast<unsigned>(content.size() + 4));
  frame += content;
  return frame + Checksum(frame);
}

std::string Request(std::uint16_t code, std::string_view parameters) {
  std::string content = Word(code);
  content += parameters;
  return Framed(content);
}

std::string Reply(std::uint16_t code, std::uint16_t status, std::string_view data) {
  std::string content = Word(code) + Word(status);
  content += data;
  return Framed(content);
}

std::string ErrorReply(std::uint16_t code, unsigned number, std::string_view message) {
  return Reply(code, kError, Word(number) + Text(message));
}

std::uint16_t WordAt(std::string_view bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(ByteAt(bytes, offset) * 256 + ByteAt(bytes, offset + 1));
}

std::uint16_t StatusOf(std::string_view reply) { return WordAt(reply, 4); }

std::string DataOf(std::string_view reply) { return std::string(reply.substr(6, reply.size() - 8)); }

unsigned ErrorNumberOf(std::string_view reply) { return WordAt(reply, 6); }

std::string ErrorTextOf(std::string_view reply) {
  const std::string data = DataOf(reply);
  if (StatusOf(reply) != kError || data.size() < 4) return {};
  const std::size_t length = WordAt(data, 2);
  return 4 + length + length % 2 == data.size() ? data.substr(4, length) : std::string();
}

}  // namespace korval::tests
