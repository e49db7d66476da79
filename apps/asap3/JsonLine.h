// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korval::apps {

/// One JSON object on one line (RFC 8259); its members keep the order in which they are added. Numbers that
/// JSON does not know (infinities, not a number) become null.
class JsonLine {
 public:
  JsonLine& Add(std::string_view key, const std::string& text);
  JsonLine& Add(std::string_view key, float number);
  JsonLine& Add(std::string_view key, double number);
  JsonLine& Add(std::string_view key, std::int32_t number);
  /// null when there is none.
  JsonLine& Add(std::string_view key, std::optional<float> number);
  JsonLine& Add(std::string_view key, const JsonLine& object);
  JsonLine& AddNull(std::string_view key);

  std::string Text() const { return "{" + members_ + "}"; }

 private:
  JsonLine& AddMember(std::string_view key, std::string_view value);

  std::string members_;
};

}  // namespace korval::apps
