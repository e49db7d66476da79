// SPDX-License-Identifier: MIT
#include "ecu/description/ErrorTable.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/NumberText.h"
#include "base/XmlFile.h"
#include "ecu/description/ErrorNumbers.h"

namespace korval::ecu {
namespace {

struct BuiltIn {
  std::int32_t number;
  std::string_view text;
};

constexpr std::array<BuiltIn, 15> kBuiltIn{{
    {kLinkLost, "The interface or the link to it was lost, or the session was closed"},
    {kNoInterface, "No diagnostic interface configured"},
    {kInterfaceRefused, "The diagnostic interface cannot be opened"},
    {kCanNetworkError, "CAN network error, nobody acknowledges or the bus is off"},
    {kNoAnswer, "No answer from the ECU"},
    {kNegativeAnswer, "Negative answer"},
    {kAnswerTooShort, "Answer too short"},
    {kForeignAnswer, "The answer does not belong to the request"},
    {kUnknownName, "Unknown data or property name"},
    {kReadOnly, "Read only"},
    {kValueRefused, "Value refused"},
    {kNoEcuFile, "No ECU file for this function"},
    {kInitialisationRefused, "The ECU refused or lost its initialisation"},
    {kCommunicationEnded, "The ECU ended the communication"},
    {kTesterPresentUnanswered, "Tester present was not answered"},
}};

}  // namespace

std::string ErrorTable::Load(const std::string& path) {
  texts_.clear();
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return {};
  try {
    const base::XmlDocument document = base::LoadXmlFile(path);
    for (const pugi::xml_node& error : document->child("errors").children("error")) {
      const auto number = base::ReadInteger(error.attribute("number").value());
      const std::string text = error.find_child_by_attribute("text", "lang", language_.c_str()).child_value();
      if (number && !text.empty()) texts_[*number] = text;
    }
    return {};
  } catch (const base::Failure& failure) {
    texts_.clear();
    return "The error texts of " + path +
           " cannot be used, the built-in ones stand in: " + failure.Description();
  }
}

std::string ErrorTable::Text(std::int32_t number) const {
  const auto loaded = texts_.find(number);
  if (loaded != texts_.end()) return loaded->second;
  const auto* const built_in = std::find_if(kBuiltIn.begin(), kBuiltIn.end(),
                                            [&](const BuiltIn& entry) { return entry.number == number; });
  return built_in == kBuiltIn.end() ? "Error " + std::to_string(number) : std::string(built_in->text);
}

base::Failure ErrorTable::MakeFailure(std::int32_t number, const std::string& detail) const {
  return {number, Text(number) + (detail.empty() ? "" : ": " + detail)};
}

}  // namespace korval::ecu
