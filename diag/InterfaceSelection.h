// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "base/Job.h"
#include "base/Task.h"
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

  /// `owner` owns this and everything it works on; it is held for the length of each step.
  void Bind(const std::weak_ptr<void>& owner) { selection_.SetOwner(owner); }

  /// Runs at show and whenever the plugged-in interfaces change, once more behind a selection that is under
  /// way. Raises nothing.
  void SelectDiagInterface();

 private:
  base::Task<void> SelectUntilSettled();
  base::Task<void> Select();
  base::Task<std::string> Choose(std::string chosen, const std::vector<std::string>& plugged);
  void ReportMissing(const std::string& chosen);
  void ShowReady();
  base::Task<void> ReopenLink();

  host::TraceConsole& console_;
  host::HostSettings& settings_;
  PortScout& scout_;
  PortLabel& label_;
  DiagnosisObject& diagnosis_;
  bool has_changed_ = false;  // since the selection under way began
  base::Job selection_;
};

}  // namespace korval::diag
