// SPDX-License-Identifier: MIT
// ASAP3 frames as a client sees them: length word, command code, fields, checksum; every word big-endian.
// Written apart from the server's own codec, so that a mistake there cannot hide here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace korval::tests {

constexpr std::uint16_t kInit = 2;
constexpr std::uint16_t kSelectFile = 3;
constexpr std::uint16_t kSetAcquisition = 12;
constexpr std::uint16_t kSwitching = 13;
constexpr std::uint16_t kGetParameter = 14;
constexpr std::uint16_t kSetParameter = 15;
constexpr std::uint16_t kGetOnlineValue = 19;
constexpr std::uint16_t kIdentify = 20;
constexpr std::uint16_t kExit = 50;
constexpr std::uint16_t kExtendedGet = 114;
constexpr std::uint16_t kExtendedSet = 115;

constexpr std::uint16_t kSuccess = 0;
constexpr std::uint16_t kError = 0xFFFF;
constexpr std::uint16_t kNotProcessed = 0x2343;
constexpr std::uint16_t kUnknownCommand = 0x5656;

/// The frame that answers a client while a command is in progress.
extern const std::string kGlobalError;

/// Bytes from hexadecimal text in which blanks are skipped.
std::string FromHex(std::string_view text);
/// Two upper-case hexadecimal digits a byte, nothing between them.
std::string Hex(std::string_view bytes);

std::string Word(unsigned value);
std::string Real(float value);
std::string Real8(double value);
/// A word with the number of characters, the characters, and a zero byte after an odd number of them.
std::string Text(std::string_view characters);
/// The four reals that answer a parameter: value, minimum, maximum and increment.
std::string FourReals(float value);
std::string FourReals8(double value);

/// A request without a length and checksum of its own making: both are right.
std::string Request(std::uint16_t code, std::string_view parameters = {});
std::string Reply(std::uint16_t code, std::uint16_t status, std::string_view data = {});
/// The reply with status 65535 whose data are a number and a message.
std::string ErrorReply(std::uint16_t code, unsigned number, std::string_view message);
/// `content` between its length word and its checksum, whatever it is.
std::string Framed(std::string_view content);
/// The sum of the big-endian words of `bytes`, as a word. An odd last byte does not count.
std::string Checksum(std::string_view bytes);

/// The word at `offset`; the bytes must hold it.
std::uint16_t WordAt(std::string_view bytes, std::size_t offset);
std::uint16_t StatusOf(std::string_view reply);
/// What stands between the status and the checksum of a reply.
std::string DataOf(std::string_view reply);
/// The number and the message of an error reply; the message is "" when the record is not whole.
unsigned ErrorNumberOf(std::string_view reply);
std::string ErrorTextOf(std::string_view reply);

}  // namespace korval::tests
