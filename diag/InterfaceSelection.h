// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "diag/DiagnosisObject.h"
#include "diag/PortLabel.h"
#include "diag/PortScout.h"
#include "host/settings/HostSettings.h"
#include "host/trace/TraceConsole.h"

namespace korval::diag {

/// Reconciles the stored choice of diagnostic interface with the interfaces that are plugged in, shows the
/// result on the port label, and reopens the diagnosis object's link when the choice changed.
class InterfaceSelection {
 public:
  /// The arguments outlive the selection.
  InterfaceSelection(host::TraceConsole& console, host::HostSettings& settings, PortScout& scout,
                     PortLabel& label, DiagnosisObject& diagnosis)
      : console_(console), settings_(settings), scout_(scout), label_(label), diagnosis_(diagnosis) {}

  /// Runs at show and whenever the plugged-in interfaces change. Raises nothing.
  void SelectDiagInterface();

 private:
  void Select();
  std::string Choose(const std::string& chosen, const std::vector<std::string>& plugged);
  void ReportMissing(const std::string& chosen);
  void ShowReady();
  void ReopenLink();

  host::TraceConsole& console_;
  host::HostSettings& settings_;
  PortScout& scout_;
  PortLabel& label_;
  DiagnosisObject& diagnosis_;
  bool selecting_ = false;  // reopening the link may wait, and the interfaces may change again inside
  bool asked_ = false;
};

}  // namespace korval::diag
