// SPDX-License-Identifier: MIT
#include "apps/check/CheckedFile.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "base/Failure.h"
#include "base/FileContent.h"

namespace korval::apps {
namespace {

std::string ReadBytes(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error)) throw base::Failure(path.string() + ": there is no such file");
  return base::ReadFile(path, base::kMaxXmlFileSize);
}

// What tells elements of one kind apart.
std::string_view NameOf(const pugi::xml_node& element) {
  static constexpr std::array<const char*, 8> kNaming{"Name", "name",    "Item",      "Function",
                                                      "Code", "Request", "shortname", "Value"};
  for (const char* attribute : kNaming) {
    const std::string_view name = element.attribute(attribute).value();
    if (!name.empty()) return name;
  }
  return {};
}

}  // namespace

CheckedFile::CheckedFile(const std::filesystem::path& path) : CheckedFile(path, ReadBytes(path)) {}

CheckedFile::CheckedFile(std::filesystem::path path, std::string bytes)
    : path_(std::move(path)), bytes_(std::move(bytes)), text_(bytes_) {}

base::XmlDocument CheckedFile::Parse() {
  ReportEncoding();
  try {
    return base::LoadXmlText(bytes_, path_.filename().string());
  } catch (const base::Failure& failure) {
    ReportParseFailure(failure.Description());
    return nullptr;
  }
}

// A finding has its line in front, where editors look for it: the parser is asked once more.
void CheckedFile::ReportParseFailure(const std::string& reason) {
  const std::string& text = text_.Utf8();
  const auto result =
      pugi::xml_document().load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8);
  if (result) return ReportLine(1, reason + ".");
  const auto place = static_cast<std::size_t>(result.offset);
  ReportLine(text_.LineAt(place), "This is no XML that can be read: " + std::string(result.description()) +
                                      " (column " + std::to_string(text_.ColumnAt(place)) + ").");
}

void CheckedFile::ReportEncoding() {
  const auto place = text_.DoubtfulPlace();
  if (!place) return;
  const auto lines = std::count(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(*place), '\n');
  ReportLine(
      static_cast<std::size_t>(lines) + 1,
      text_.IsSingleByte()
          ? "This line is stored in UTF-8, but the file's first line says otherwise; write "
            "encoding=\"UTF-8\" there."
          : "This line holds a byte that is no UTF-8; store the file in UTF-8, or name its encoding in "
            "the first line (encoding=\"windows-1252\").");
}

void CheckedFile::Report(const pugi::xml_node& element, const std::string& sentence) {
  std::string label = element.name();
  if (const std::string_view name = NameOf(element); !name.empty()) label.append(" ").append(name);
  const std::ptrdiff_t place = element.offset_debug();
  ReportLine(text_.LineAt(place < 0 ? 0 : static_cast<std::size_t>(place)), label + ": " + sentence);
}

void CheckedFile::Note(const pugi::xml_node& element, const std::string& sentence) {
  Report(element, sentence);
  findings_.back().is_note = true;
}

void CheckedFile::ReportLine(std::size_t line, std::string sentence) {
  findings_.push_back({line, std::move(sentence)});
}

std::vector<Finding> CheckedFile::Findings() const {
  std::vector<Finding> sorted = findings_;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Finding& one, const Finding& other) { return one.line < other.line; });
  return sorted;
}

}  // namespace korval::apps
