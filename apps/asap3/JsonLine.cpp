// SPDX-License-Identifier: MIT
#include "apps/asap3/JsonLine.h"

#include <cmath>

#include "base/AnsiText.h"
#include "base/ByteBuffer.h"
#include "base/NumberText.h"

namespace korval::apps {
namespace {

void AppendEscaped(std::string& json, char32_t character) {
  if (character == '"' || character == '\\') {
    json += '\\';
    json += static_cast<char>(character);
  } else if (character < 0x20 || (character >= 0x7F && character <= 0x9F)) {
    const auto byte = static_cast<std::uint8_t>(character);
    json += "\\u00" + base::HexText({&byte, 1});
  } else {
    base::AppendCharacter(json, character);
  }
}

std::string Quoted(std::string_view utf8) {
  std::string json = "\"";
  for (std::size_t position = 0; position < utf8.size();) {
    AppendEscaped(json, base::NextCharacter(utf8, position));
  }
  return json + "\"";
}

}  // namespace

JsonLine& JsonLine::Add(std::string_view key, const std::string& text) {
  return AddMember(key, Quoted(text));
}

JsonLine& JsonLine::Add(std::string_view key, float number) {
  return AddMember(key, std::isfinite(number) ? base::SingleText(number) : "null");
}

JsonLine& JsonLine::Add(std::string_view key, double number) {
  return AddMember(key, std::isfinite(number) ? base::DoubleText(number) : "null");
}

JsonLine& JsonLine::Add(std::string_view key, std::int32_t number) {
  return AddMember(key, base::DoubleText(number));
}

JsonLine& JsonLine::Add(std::string_view key, std::optional<float> number) {
  return number ? Add(key, *number) : AddNull(key);
}

JsonLine& JsonLine::Add(std::string_view key, const JsonLine& object) {
  return AddMember(key, object.Text());
}

JsonLine& JsonLine::AddNull(std::string_view key) { return AddMember(key, "null"); }

JsonLine& JsonLine::AddMember(std::string_view key, std::string_view value) {
  if (!members_.empty()) members_ += ',';
  members_ += Quoted(key) + ":";
  members_ += value;
  return *this;
}

}  // namespace korval::apps
