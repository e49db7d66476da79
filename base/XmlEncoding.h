// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korval::base {

/// How the characters of an XML text are stored.
enum class XmlEncoding {
  kUtf8,
  kUtf16LittleEndian,
  kUtf16BigEndian,
  kUtf32LittleEndian,
  kUtf32BigEndian,
  kLatin1,
  kLatin9,
  kWindows1252
};

/// Told by the byte order mark, else by the zero bytes beside the first '<', else by the name that the
/// declaration gives; UTF-8 without any of them. None for a name that is not understood.
std::optional<XmlEncoding> EncodingOf(std::string_view bytes);
/// The name of the encoding as the declaration of a text in single bytes has it; "" without one.
std::string DeclaredEncoding(std::string_view bytes);
bool IsSingleByte(XmlEncoding encoding);
/// Behind the byte order mark, if there is one.
std::string_view WithoutMark(std::string_view bytes, XmlEncoding encoding);
/// The text in UTF-8, without byte order mark.
std::string Utf8Text(std::string_view bytes, XmlEncoding encoding);

}  // namespace korval::base
