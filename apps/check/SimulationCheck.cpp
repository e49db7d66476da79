// SPDX-License-Identifier: MIT
#include "apps/check/SimulationCheck.h"

#include <cstdint>
#include <string_view>

#include "apps/check/ElementCheck.h"
#include "base/Failure.h"
#include "ecu/description/ItemEncoding.h"
#include "ecu/ecufile/AttributeReader.h"
#include "ecu/ecufile/Grammar.h"

namespace korval::apps {
namespace {

namespace grammar = ecu::grammar;
using grammar::kDtc;
using grammar::kFault;
using grammar::kSignal;

constexpr std::size_t kMostCodes = 255;

bool IsText(const ecu::ItemDescription& item) {
  return item.coding == ecu::Coding::kAscii || item.coding == ecu::Coding::kBytes;
}

class SimulationCheck {
 public:
  SimulationCheck(CheckedFile& file, const EcuFileNames& names) : file_(file), names_(names) {}

  void Run(const pugi::xml_node& simulation) {
    ElementCheck check(file_, simulation);
    check.Value(grammar::kSimulation["LatencyMs"]);
    check.Value(grammar::kSimulation["DtcPerAnswer"]);
    const auto key_bytes = check.Bytes(grammar::kSimulation["KeyBytes"]);
    if (key_bytes && !ecu::HasLength(grammar::kSimulation["KeyBytes"], key_bytes->Length())) {
      file_.Report(simulation, "KeyBytes are two bytes, for example EF8F.");
    }
    for (const pugi::xml_node& signal : simulation.children("Signal")) CheckSignal(signal);
    for (const pugi::xml_node& code : simulation.children("Dtc")) CheckDtc(code);
    for (const pugi::xml_node& answer : simulation.children("Answer")) CheckAnswer(answer);
    for (const pugi::xml_node& fault : simulation.children("Fault")) CheckFault(fault);
  }

 private:
  void CheckSignal(const pugi::xml_node& signal);
  void CheckWave(const pugi::xml_node& signal, const ecu::ItemDescription& item);
  void CheckValue(const pugi::xml_node& signal, const char* attribute, const ecu::ItemDescription& item);
  void CheckDtc(const pugi::xml_node& dtc);
  void CheckAnswer(const pugi::xml_node& answer);
  void CheckFault(const pugi::xml_node& fault);

  CheckedFile& file_;
  const EcuFileNames& names_;
  std::set<std::string> signals_;
  std::size_t dtc_count_ = 0;
  std::set<std::uint32_t> codes_;
  std::set<std::string> answers_;  // their requests, as hexadecimal digits
};

void SimulationCheck::CheckSignal(const pugi::xml_node& signal) {
  ElementCheck check(file_, signal);
  bool right = check.Value(kSignal["Wave"]);
  right &= check.Value(kSignal["Min"]);
  right &= check.Value(kSignal["Max"]);
  right &= check.Value(kSignal["PeriodMs"]);
  if (!check.Required(kSignal["Item"], "the signal belongs to no data item")) return;
  const std::string item = signal.attribute("Item").value();
  const auto found = names_.items.find(item);
  if (found == names_.items.end()) {
    if (!names_.has_frames) {
      file_.Report(signal, "no request of the file has a data item of this name; the signal is not used.");
    }
    return;
  }
  if (!signals_.insert(item).second) {
    file_.Report(signal, "this item has a signal already; the first one serves.");
  }
  if (right && !found->second.empty()) CheckWave(signal, found->second.front());
}

void SimulationCheck::CheckWave(const pugi::xml_node& signal, const ecu::ItemDescription& item) {
  const std::string_view wave = signal.attribute("Wave").as_string("constant");
  if (wave == "constant") return CheckValue(signal, "Value", item);
  if (IsText(item)) {
    file_.Report(signal, "a text does not move; give it Wave=\"constant\" and a Value.");
    return;
  }
  if (!signal.attribute("Min") && !signal.attribute("Max")) {
    file_.Report(signal, "has neither Min nor Max, so the item stays 0.");
    return;
  }
  CheckValue(signal, "Min", item);
  CheckValue(signal, "Max", item);
}

// The coding is asked whether the item can hold the value.
void SimulationCheck::CheckValue(const pugi::xml_node& signal, const char* attribute,
                                 const ecu::ItemDescription& item) {
  base::ByteBuffer message;
  message.SetLength(item.BytesNeeded());
  const std::string value = signal.attribute(attribute).as_string("0");
  try {
    ecu::EncodeText(item, value, message);
  } catch (const base::Failure&) {
    file_.Report(signal, std::string(attribute) + " " + value + " is nothing that the item can hold.");
  }
}

void SimulationCheck::CheckDtc(const pugi::xml_node& dtc) {
  if (++dtc_count_ == kMostCodes + 1) {
    file_.Report(dtc, "an ECU reports at most 255 trouble codes; take some out.");
  }
  ElementCheck check(file_, dtc);
  check.Value(kDtc["Status"]);
  if (!check.Required(kDtc["Code"], "the trouble code is left out") || !check.Value(kDtc["Code"])) return;
  if (!codes_.insert(*ecu::HexAttribute(dtc, kDtc["Code"])).second)
    file_.Report(dtc, "this trouble code stands twice.");
}

void SimulationCheck::CheckAnswer(const pugi::xml_node& answer) {
  ElementCheck check(file_, answer);
  const bool has_response = check.Value(grammar::kAnswer["Response"]);
  if (!check.Required(grammar::kAnswer["Request"], "the answer is left out")) return;
  const auto request = check.Bytes(grammar::kAnswer["Request"]);
  if (!request || !has_response) return;
  if (!answers_.insert(base::HexText(request->View())).second) {
    file_.Report(answer, "there is an answer to this request already; this one is never used.");
  }
}

void SimulationCheck::CheckFault(const pugi::xml_node& fault) {
  ElementCheck check(file_, fault);
  check.Value(kFault["Number"]);
  check.Value(kFault["Times"]);
  check.Value(kFault["Wire"]);
  check.Value(kFault["Init"]);
  const std::string request = fault.attribute("Request").value();
  const bool init = std::string_view(fault.attribute("Init").value()) == "1";
  if (request.empty() && !init) {
    file_.Report(fault, "names neither a Request nor Init=\"1\"; the fault never happens.");
  } else if (!request.empty() && !names_.requests.contains(request)) {
    file_.Report(fault, "the file has no request of this name; the fault never happens.");
  }
}

}  // namespace

void CheckSimulation(CheckedFile& file, const pugi::xml_node& root, const EcuFileNames& names) {
  const pugi::xml_node simulation = root.child("Simulation");
  SimulationCheck(file, names).Run(simulation);
  const pugi::xml_node second = simulation.next_sibling("Simulation");
  if (second) file.Report(second, "there is one already; only the first one is used.");
}

}  // namespace korval::apps
