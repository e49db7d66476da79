// SPDX-License-Identifier: MIT
#include "Output.h"

#include <cstdio>
#include <stdexcept>

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

namespace korval::asap3 {
namespace {

std::string ValueText(const base::Variant& value) { return value.IsEmpty() ? "no value" : value.ToText(); }

std::string JsonText(const std::string& text) {
  const QByteArray wrapped =
      QJsonDocument(QJsonObject{{"t", QString::fromStdString(text)}}).toJson(QJsonDocument::Compact);
  return wrapped.mid(5, wrapped.size() - 6).toStdString();
}

std::string JsonValue(const base::Variant& value) {
  if (value.IsEmpty()) return "null";
  const std::string text = value.ToText();
  const bool is_number = value.IsNumeric() && text.find_first_of("Nn") == std::string::npos;
  return is_number ? text : JsonText(text);
}

void PrintJson(const Output::Fields& fields) {
  std::string line;
  for (const auto& [name, value] : fields) {
    line += (line.empty() ? "{" : ",") + JsonText(name) + ":" + JsonValue(value);
  }
  std::printf("%s}\n", line.empty() ? "{" : line.c_str());
  std::fflush(stdout);
}

std::string CsvCell(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + "\"";
}

}  // namespace

void Output::Values(const Fields& fields) const {
  if (json_) return PrintJson(fields);
  for (const auto& [name, value] : fields) std::printf("%s = %s\n", name.c_str(), ValueText(value).c_str());
  std::fflush(stdout);
}

void Output::Row(const Fields& fields) const {
  if (json_) return PrintJson(fields);
  std::string line;
  for (const auto& [name, value] : fields) {
    line += (line.empty() ? "" : "  ") + name + " = " + ValueText(value);
  }
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

void Output::Error(std::uint16_t status, std::int32_t code, const std::string& message) const {
  if (json_) {
    std::fprintf(stderr, "{\"error\":{\"status\":%d,\"code\":%d,\"message\":%s}}\n", status, code,
                 JsonText(message).c_str());
  } else {
    std::fprintf(stderr, "asap3: error %d: %s\n", code, message.c_str());
  }
}

CsvFile::CsvFile(const std::string& path, const std::vector<std::string>& names)
    : path_(path), file_(path, std::ios::trunc) {
  WriteLine(names);
}

void CsvFile::Write(const Output::Fields& fields) {
  std::vector<std::string> cells;
  for (const auto& [name, value] : fields) cells.push_back(value.IsEmpty() ? "" : value.ToText());
  WriteLine(cells);
}

void CsvFile::WriteLine(const std::vector<std::string>& cells) {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) line += (i == 0 ? "" : ",") + CsvCell(cells[i]);
  file_ << line << "\n" << std::flush;
  if (!file_)
    throw std::runtime_error("The file " + path_ + " cannot be written: check the folder and its rights");
}

}  // namespace korval::asap3
