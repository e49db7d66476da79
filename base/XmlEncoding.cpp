// SPDX-License-Identifier: MIT
#include "base/XmlEncoding.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdint>

#include "base/AnsiText.h"

namespace korval::base {
namespace {

using namespace std::string_view_literals;

struct Mark {
  std::string_view bytes;
  XmlEncoding encoding;
};

// Those of UTF-32 first: the little-endian one begins as that of UTF-16 does.
constexpr std::array<Mark, 5> kMarks{{{"\xFF\xFE\0\0"sv, XmlEncoding::kUtf32LittleEndian},
                                      {"\0\0\xFE\xFF"sv, XmlEncoding::kUtf32BigEndian},
                                      {"\xFF\xFE"sv, XmlEncoding::kUtf16LittleEndian},
                                      {"\xFE\xFF"sv, XmlEncoding::kUtf16BigEndian},
                                      {"\xEF\xBB\xBF"sv, XmlEncoding::kUtf8}}};

constexpr std::array<Mark, 4> kFirstCharacters{{{"<\0\0\0"sv, XmlEncoding::kUtf32LittleEndian},
                                                {"\0\0\0<"sv, XmlEncoding::kUtf32BigEndian},
                                                {"<\0"sv, XmlEncoding::kUtf16LittleEndian},
                                                {"\0<"sv, XmlEncoding::kUtf16BigEndian}}};

struct Name {
  std::string_view name;
  XmlEncoding encoding;
};

// Whoever declares UTF-16 in single bytes has stored the text in UTF-8.
constexpr std::array<Name, 21> kNames{{{"utf-8", XmlEncoding::kUtf8},
                                       {"utf8", XmlEncoding::kUtf8},
                                       {"us-ascii", XmlEncoding::kUtf8},
                                       {"ascii", XmlEncoding::kUtf8},
                                       {"utf-16", XmlEncoding::kUtf8},
                                       {"utf-16le", XmlEncoding::kUtf8},
                                       {"utf-16be", XmlEncoding::kUtf8},
                                       {"utf-32", XmlEncoding::kUtf8},
                                       {"utf-32le", XmlEncoding::kUtf8},
                                       {"utf-32be", XmlEncoding::kUtf8},
                                       {"iso-8859-1", XmlEncoding::kLatin1},
                                       {"iso_8859-1", XmlEncoding::kLatin1},
                                       {"iso8859-1", XmlEncoding::kLatin1},
                                       {"latin1", XmlEncoding::kLatin1},
                                       {"iso-8859-15", XmlEncoding::kLatin9},
                                       {"iso_8859-15", XmlEncoding::kLatin9},
                                       {"iso8859-15", XmlEncoding::kLatin9},
                                       {"latin-9", XmlEncoding::kLatin9},
                                       {"windows-1252", XmlEncoding::kWindows1252},
                                       {"cp1252", XmlEncoding::kWindows1252},
                                       {"x-cp1252", XmlEncoding::kWindows1252}}};

template <std::size_t kCount>
std::optional<XmlEncoding> Beginning(const std::array<Mark, kCount>& marks, std::string_view bytes) {
  for (const Mark& mark : marks) {
    if (bytes.starts_with(mark.bytes)) return mark.encoding;
  }
  return std::nullopt;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

void SkipBlanks(std::string_view& text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
}

std::uint8_t ByteAt(std::string_view bytes, std::size_t place) {
  return static_cast<std::uint8_t>(bytes[place]);
}

// The number that `size` bytes are.
char32_t Unit(std::string_view bytes, std::size_t place, std::size_t size, bool little_endian) {
  char32_t unit = 0;
  for (std::size_t i = 0; i < size; ++i) {
    unit = unit << 8 | ByteAt(bytes, place + (little_endian ? size - 1 - i : i));
  }
  return unit;
}

std::string FromUtf16(std::string_view bytes, bool little_endian) {
  std::string utf8;
  char32_t high = 0;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const char32_t unit = Unit(bytes, i, 2, little_endian);
    if (unit >= 0xD800 && unit < 0xDC00) {
      high = unit;
    } else if (unit >= 0xDC00 && unit < 0xE000) {
      AppendCharacter(utf8, 0x10000 + ((high & 0x3FF) << 10) + (unit & 0x3FF));
    } else {
      AppendCharacter(utf8, unit);
    }
  }
  return utf8;
}

std::string FromUtf32(std::string_view bytes, bool little_endian) {
  constexpr char32_t kLast = 0x10FFFF;
  constexpr char32_t kReplacement = 0xFFFD;
  std::string utf8;
  for (std::size_t i = 0; i + 3 < bytes.size(); i += 4) {
    const char32_t unit = Unit(bytes, i, 4, little_endian);
    AppendCharacter(utf8, unit <= kLast ? unit : kReplacement);
  }
  return utf8;
}

char32_t Iso8859_15(std::uint8_t byte) {
  switch (byte) {
    case 0xA4:
      return 0x20AC;
    case 0xA6:
      return 0x0160;
    case 0xA8:
      return 0x0161;
    case 0xB4:
      return 0x017D;
    case 0xB8:
      return 0x017E;
    case 0xBC:
      return 0x0152;
    case 0xBD:
      return 0x0153;
    case 0xBE:
      return 0x0178;
    default:
      return byte;
  }
}

template <typename Character>
std::string FromSingleBytes(std::string_view bytes, Character character) {
  std::string utf8;
  utf8.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) AppendCharacter(utf8, character(ByteAt(bytes, i)));
  return utf8;
}

}  // namespace

std::string DeclaredEncoding(std::string_view bytes) {
  static constexpr std::size_t kLongest = 200;
  SkipBlanks(bytes);
  if (!bytes.starts_with("<?xml")) return {};
  std::string_view declaration = bytes.substr(0, std::min(bytes.find("?>"), kLongest));
  const std::size_t place = declaration.find("encoding");
  if (place == std::string_view::npos) return {};
  declaration.remove_prefix(place + "encoding"sv.size());
  SkipBlanks(declaration);
  if (!declaration.starts_with('=')) return {};
  declaration.remove_prefix(1);
  SkipBlanks(declaration);
  if (declaration.empty() || (declaration.front() != '"' && declaration.front() != '\'')) return {};
  const char quote = declaration.front();
  declaration.remove_prefix(1);
  return std::string(declaration.substr(0, declaration.find(quote)));
}

std::optional<XmlEncoding> EncodingOf(std::string_view bytes) {
  if (const auto marked = Beginning(kMarks, bytes)) return marked;
  if (const auto wide = Beginning(kFirstCharacters, bytes)) return wide;
  std::string name = DeclaredEncoding(bytes);
  if (name.empty()) return XmlEncoding::kUtf8;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const auto* const known =
      std::find_if(kNames.begin(), kNames.end(), [&](const Name& entry) { return entry.name == name; });
  return known == kNames.end() ? std::nullopt : std::optional(known->encoding);
}

bool IsSingleByte(XmlEncoding encoding) {
  return encoding == XmlEncoding::kLatin1 || encoding == XmlEncoding::kLatin9 ||
         encoding == XmlEncoding::kWindows1252;
}

std::string_view WithoutMark(std::string_view bytes, XmlEncoding encoding) {
  for (const Mark& mark : kMarks) {
    if (mark.encoding == encoding && bytes.starts_with(mark.bytes)) return bytes.substr(mark.bytes.size());
  }
  return bytes;
}

std::string Utf8Text(std::string_view bytes, XmlEncoding encoding) {
  const std::string_view text = WithoutMark(bytes, encoding);
  switch (encoding) {
    case XmlEncoding::kUtf8:
      return std::string(text);
    case XmlEncoding::kUtf16LittleEndian:
    case XmlEncoding::kUtf16BigEndian:
      return FromUtf16(text, encoding == XmlEncoding::kUtf16LittleEndian);
    case XmlEncoding::kUtf32LittleEndian:
    case XmlEncoding::kUtf32BigEndian:
      return FromUtf32(text, encoding == XmlEncoding::kUtf32LittleEndian);
    case XmlEncoding::kLatin1:
      return FromSingleBytes(text, [](std::uint8_t byte) { return char32_t{byte}; });
    case XmlEncoding::kLatin9:
      return FromSingleBytes(text, Iso8859_15);
    case XmlEncoding::kWindows1252:
      return Utf8FromAnsi({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  }
  return {};
}

}  // namespace korval::base
