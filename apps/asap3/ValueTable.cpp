// SPDX-License-Identifier: MIT
#include "apps/asap3/ValueTable.h"

#include <algorithm>

#include "apps/asap3/JsonLine.h"
#include "base/NumberText.h"

namespace korval::apps {
namespace {

constexpr std::size_t kNarrowest = 12;
constexpr std::size_t kTimeWidth = 10;

double Seconds(std::chrono::milliseconds time) { return static_cast<double>(time.count()) / 1000; }

std::size_t CharactersOf(const std::string& utf8) {
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  }));
}

std::string RightAligned(const std::string& text, std::size_t width) {
  const std::size_t length = CharactersOf(text);
  return std::string(length < width ? width - length : 0, ' ') + text;
}

std::size_t WidthOf(const std::string& name) { return std::max(kNarrowest, CharactersOf(name)); }

std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string field = "\"";
  for (const char character : text) field.append(character == '"' ? 2 : 1, character);
  return field + "\"";
}

}  // namespace

std::string ValueTable::TextHeader() const {
  std::string line = RightAligned("seconds", kTimeWidth);
  for (const std::string& name : names_) line += "  " + RightAligned(name, WidthOf(name));
  return line;
}

std::string ValueTable::TextRow(std::chrono::milliseconds time, const Values& values) const {
  std::string line = RightAligned(base::DoubleText(Seconds(time)), kTimeWidth);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::string text = values[i] ? base::SingleText(*values[i]) : "no value";
    line += "  " + RightAligned(text, WidthOf(names_[i]));
  }
  return line;
}

std::string ValueTable::CsvHeader() const {
  std::string line = "seconds";
  for (const std::string& name : names_) line += "," + CsvField(name);
  return line;
}

std::string ValueTable::CsvRow(std::chrono::milliseconds time, const Values& values) const {
  std::string line = base::DoubleText(Seconds(time));
  for (const std::optional<float>& value : values) line += "," + (value ? base::SingleText(*value) : "");
  return line;
}

std::string ValueTable::JsonRow(std::chrono::milliseconds time, const Values& values) const {
  JsonLine by_name;
  for (std::size_t i = 0; i < values.size(); ++i) by_name.Add(names_[i], values[i]);
  return JsonLine().Add("seconds", Seconds(time)).Add("values", by_name).Text();
}

}  // namespace korval::apps
