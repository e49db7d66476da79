// SPDX-License-Identifier: MIT
#include "ecu/ecufile/ErrorFile.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "base/Failure.h"
#include "base/NumberText.h"
#include "base/XmlFile.h"

namespace korval::ecu {
namespace {

ErrorTable::Texts ReadTexts(const pugi::xml_document& document, const std::string& language) {
  ErrorTable::Texts texts;
  for (const pugi::xml_node& error : document.child("errors").children("error")) {
    const auto number = base::ReadInteger(error.attribute("number").value());
    const std::string text = error.find_child_by_attribute("text", "lang", language.c_str()).child_value();
    if (number && !text.empty()) texts[*number] = text;
  }
  return texts;
}

}  // namespace

std::string LoadErrorFile(const std::string& path, ErrorTable& table) {
  table.SetTexts({});
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return {};
  try {
    table.SetTexts(ReadTexts(*base::LoadXmlFile(path), table.Language()));
    return {};
  } catch (const base::Failure& failure) {
    return "The error texts of " + path +
           " cannot be used, the built-in ones stand in: " + failure.Description();
  }
}

}  // namespace korval::ecu
