// SPDX-License-Identifier: MIT
#include "apps/check/SourceText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "base/AnsiText.h"

namespace korval::apps {
namespace {

constexpr char32_t kNoCharacter = 0xFFFD;

// The first line as far as the parser looks for an encoding, in lower case.
std::string Declaration(std::string_view bytes) {
  if (!bytes.starts_with("<?xml")) return {};
  std::string declaration(bytes.substr(0, std::min<std::size_t>(bytes.find("?>"), 200)));
  std::transform(declaration.begin(), declaration.end(), declaration.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return declaration;
}

bool DeclaresSingleByte(std::string_view bytes) {
  static constexpr std::array<std::string_view, 4> kNames{"windows-1252", "cp1252", "iso-8859-1", "latin1"};
  const std::string declaration = Declaration(bytes);
  return std::any_of(kNames.begin(), kNames.end(),
                     [&](std::string_view name) { return declaration.find(name) != std::string::npos; });
}

// UTF-16 as it is recognised: by its byte order mark, or by the half of the first '<' that is zero.
enum class Utf16 { kNo, kLittleEndian, kBigEndian };

Utf16 Utf16Of(std::string_view bytes) {
  using std::string_view_literals::operator""sv;
  if (bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("<\0"sv)) return Utf16::kLittleEndian;
  if (bytes.starts_with("\xFE\xFF"sv) || bytes.starts_with("\0<"sv)) return Utf16::kBigEndian;
  return Utf16::kNo;
}

std::string Utf8FromUtf16(std::string_view bytes, bool little_endian) {
  std::string utf8;
  char32_t high = 0;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    const auto unit = static_cast<char32_t>(little_endian ? second << 8 | first : first << 8 | second);
    if (unit >= 0xD800 && unit < 0xDC00) {
      high = unit;
    } else if (unit >= 0xDC00 && unit < 0xE000) {
      base::AppendCharacter(utf8, 0x10000 + ((high & 0x3FF) << 10) + (unit & 0x3FF));
    } else {
      base::AppendCharacter(utf8, unit);
    }
  }
  return utf8;
}

std::string ToUtf8(const std::string& bytes, bool single_byte) {
  const Utf16 utf16 = Utf16Of(bytes);
  if (utf16 != Utf16::kNo) return Utf8FromUtf16(bytes, utf16 == Utf16::kLittleEndian);
  if (!single_byte) return bytes;
  return base::Utf8FromAnsi({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

// The first byte from 80 on that is, or is not, part of a UTF-8 character.
std::optional<std::size_t> FirstForeign(std::string_view bytes, bool is_utf8) {
  std::size_t position = 0;
  while (position < bytes.size()) {
    const std::size_t start = position;
    const bool ascii = static_cast<unsigned char>(bytes[start]) < 0x80;
    // A byte that starts no character gives one of length 1.
    const bool valid = base::NextCharacter(bytes, position) != kNoCharacter || position - start > 1;
    if (!ascii && valid == is_utf8) return start;
  }
  return std::nullopt;
}

// One byte that is no UTF-8 shows that a single-byte text is what it says.
std::optional<std::size_t> DoubtfulPlaceOf(const std::string& bytes, bool single_byte) {
  if (Utf16Of(bytes) != Utf16::kNo) return std::nullopt;
  const auto broken = FirstForeign(bytes, false);
  if (!single_byte) return broken;
  return broken ? std::nullopt : FirstForeign(bytes, true);
}

}  // namespace

SourceText::SourceText(const std::string& bytes)
    : single_byte_(DeclaresSingleByte(bytes)),
      utf8_(ToUtf8(bytes, single_byte_)),
      doubtful_(DoubtfulPlaceOf(bytes, single_byte_)),
      line_starts_{0} {
  for (std::size_t i = 0; i < utf8_.size(); ++i) {
    if (utf8_[i] == '\n') line_starts_.push_back(i + 1);
  }
}

std::size_t SourceText::LineAt(std::size_t place) const {
  const auto next = std::upper_bound(line_starts_.begin(), line_starts_.end(), place);
  return static_cast<std::size_t>(next - line_starts_.begin());
}

}  // namespace korval::apps
