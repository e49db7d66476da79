// SPDX-License-Identifier: MIT
#include "diag/InterfaceSelection.h"

#include <algorithm>
#include <utility>

#include "base/Failure.h"
#include "base/XmlFile.h"

namespace korval::diag {
namespace {

constexpr char kUsbPort[] = "NONE";

// A list that cannot be read counts as empty.
std::vector<std::string> SerialNumbers(const std::string& device_list) {
  std::vector<std::string> numbers;
  try {
    const base::XmlDocument document = base::LoadXmlText(device_list, "device list");
    for (const pugi::xpath_node& node : document->select_nodes("//sn")) {
      numbers.emplace_back(node.node().child_value());
    }
  } catch (const base::Failure&) {
    return {};
  }
  return numbers;
}

}  // namespace

void InterfaceSelection::SelectDiagInterface() {
  has_changed_ = true;
  if (!selection_.IsUnderWay()) selection_.Start(SelectUntilSettled());
}

base::Task<void> InterfaceSelection::SelectUntilSettled() {
  while (std::exchange(has_changed_, false)) co_await Select();
}

base::Task<void> InterfaceSelection::Select() {
  const std::string port = settings_.RegGetValue("General", "CommPort", "");
  if (port != kUsbPort) {
    ShowReady();
    label_.SetCaption(port);
    co_return;
  }
  std::string chosen = settings_.RegGetValue("Hardware", "InstanceName", "");
  const std::vector<std::string> plugged = SerialNumbers(scout_.DeviceList());
  if (plugged.empty()) {
    ReportMissing(chosen);
  } else {
    chosen = co_await Choose(chosen, plugged);
    ShowReady();
  }
  label_.SetCaption("USB " + chosen);
}

base::Task<std::string> InterfaceSelection::Choose(std::string chosen,
                                                   const std::vector<std::string>& plugged) {
  if (!chosen.empty() && std::find(plugged.begin(), plugged.end(), chosen) != plugged.end()) co_return chosen;
  const std::string& first = plugged.front();
  if (chosen.empty()) {
    console_.Line("No interface selected, automaticaly choose first one : " + first);
  } else {
    console_.Line("Interface " + chosen + " missing , automaticaly choose first one : " + first);
  }
  settings_.RegSetValue("Hardware", "InstanceName", first);
  co_await ReopenLink();
  co_return first;
}

void InterfaceSelection::ReportMissing(const std::string& chosen) {
  console_.Line("No USB-Diag interface plug on PC");
  console_.Line("Selected USB-Diag is " + chosen + " plug them !!!");
  label_.SetToolTip("Interface not plug");
  label_.SetForeColour(PortLabel::kRed);
}

void InterfaceSelection::ShowReady() {
  label_.SetToolTip("");
  label_.SetForeColour(PortLabel::kBlack);
}

base::Task<void> InterfaceSelection::ReopenLink() {
  const auto session = diagnosis_.Session();
  if (!session) co_return;
  try {
    co_await session->SetPort("");
  } catch (const base::Failure&) {
    // The old interface is gone; what counts is whether the new one opens.
  }
  // The session may have ended meanwhile: its port is no longer ours to open.
  if (diagnosis_.Session() != session) co_return;
  try {
    co_await session->SetPort(kUsbPort);
  } catch (const base::Failure& failure) {
    console_.Line("Error when opening com port : " + failure.Description());
  }
}

}  // namespace korval::diag
