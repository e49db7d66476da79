// SPDX-License-Identifier: MIT
#include "base/SerialSettings.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>

#include "base/Failure.h"
#include "base/NumberText.h"

namespace korval::base {
namespace {

constexpr std::int32_t kFastest = 4000000;

[[noreturn]] void Refuse(const std::string& text, const std::string& why) {
  throw Failure("Serial settings '" + text + "' are wrong: " + why + " (as in 9600,n,8,1)");
}

std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::array<std::string, 4> Pieces(const std::string& text) {
  if (std::count(text.begin(), text.end(), ',') != 3)
    Refuse(text, "they have four parts with commas between them");
  std::array<std::string, 4> pieces;
  std::istringstream stream(text);
  for (std::string& piece : pieces) {
    std::getline(stream, piece, ',');
    piece = Trimmed(piece);
  }
  return pieces;
}

SerialSettings::Parity ParityOf(const std::string& text, const std::string& letter) {
  if (letter.size() == 1) {
    switch (std::tolower(static_cast<unsigned char>(letter[0]))) {
      case 'n':
        return SerialSettings::Parity::kNone;
      case 'e':
        return SerialSettings::Parity::kEven;
      case 'o':
        return SerialSettings::Parity::kOdd;
      case 'm':
        return SerialSettings::Parity::kMark;
      case 's':
        return SerialSettings::Parity::kSpace;
      default:
        break;
    }
  }
  Refuse(text, "the parity is n, e, o, m or s");
}

SerialSettings::StopBits StopBitsOf(const std::string& text, const std::string& bits) {
  if (bits == "1") return SerialSettings::StopBits::kOne;
  if (bits == "1.5") return SerialSettings::StopBits::kOneAndHalf;
  if (bits == "2") return SerialSettings::StopBits::kTwo;
  Refuse(text, "stop bits are 1, 1.5 or 2");
}

}  // namespace

SerialSettings ReadSerialSettings(const std::string& text) {
  const auto pieces = Pieces(text);
  const auto speed = ReadInteger(pieces[0]);
  if (!speed || *speed < 1 || *speed > kFastest) Refuse(text, "the speed is a number from 1 to 4000000");
  const auto data_bits = ReadInteger(pieces[2]);
  if (!data_bits || *data_bits < 4 || *data_bits > 8) Refuse(text, "data bits are 4 to 8");
  return SerialSettings{*speed, ParityOf(text, pieces[1]), *data_bits, StopBitsOf(text, pieces[3])};
}

}  // namespace korval::base
