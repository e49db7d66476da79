// SPDX-License-Identifier: MIT
#include "apps/check/SourceText.h"

#include <algorithm>
#include <string_view>

#include "base/AnsiText.h"
#include "base/XmlEncoding.h"

namespace korval::apps {
namespace {

constexpr char32_t kNoCharacter = 0xFFFD;

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
std::optional<std::size_t> DoubtfulPlaceOf(std::string_view bytes, base::XmlEncoding encoding) {
  if (encoding != base::XmlEncoding::kUtf8 && !base::IsSingleByte(encoding)) return std::nullopt;
  const auto broken = FirstForeign(bytes, false);
  if (encoding == base::XmlEncoding::kUtf8) return broken;
  return broken ? std::nullopt : FirstForeign(bytes, true);
}

}  // namespace

SourceText::SourceText(const std::string& bytes) : line_starts_{0} {
  const auto encoding = base::EncodingOf(bytes);
  single_byte_ = encoding && base::IsSingleByte(*encoding);
  utf8_ = encoding ? base::Utf8Text(bytes, *encoding) : bytes;
  if (encoding) doubtful_ = DoubtfulPlaceOf(bytes, *encoding);
  for (std::size_t i = 0; i < utf8_.size(); ++i) {
    if (utf8_[i] == '\n') line_starts_.push_back(i + 1);
  }
}

std::size_t SourceText::LineAt(std::size_t place) const {
  const auto next = std::upper_bound(line_starts_.begin(), line_starts_.end(), place);
  return static_cast<std::size_t>(next - line_starts_.begin());
}

std::size_t SourceText::ColumnAt(std::size_t place) const {
  const std::size_t start = line_starts_[LineAt(place) - 1];
  std::size_t column = 1;
  for (std::size_t next = start; next < std::min(place, utf8_.size()); ++column) {
    base::NextCharacter(utf8_, next);
  }
  return column;
}

}  // namespace korval::apps
