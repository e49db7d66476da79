// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korval::apps {

/// A file's text with its lines; stored in one of the encodings of XmlEncoding. The places of elements
/// that the XML parser tells are places in Utf8(): that is what the parser works on.
class SourceText {
 public:
  explicit SourceText(const std::string& bytes);

  const std::string& Utf8() const { return utf8_; }
  /// The line, from 1, in which the byte at a place of Utf8() stands; of a place behind the end, the last.
  std::size_t LineAt(std::size_t place) const;
  /// The character's number in its line, from 1.
  std::size_t ColumnAt(std::size_t place) const;

  /// The place of the first byte that shows that the text is not stored as its first line says: one that is
  /// no UTF-8, or UTF-8 where a single-byte encoding is declared. None when all agrees.
  std::optional<std::size_t> DoubtfulPlace() const { return doubtful_; }
  bool IsSingleByte() const { return single_byte_; }

 private:
  bool single_byte_ = false;
  std::string utf8_;
  std::optional<std::size_t> doubtful_;
  std::vector<std::size_t> line_starts_;
};

}  // namespace korval::apps
