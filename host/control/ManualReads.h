// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "diag/DiagnosisObject.h"
#include "host/trace/ListView.h"
#include "host/trace/TraceConsole.h"
#include "model/Acquisition.h"
#include "model/KorvAsapFiles.h"
#include "model/KorvAsapValues.h"

namespace korval::host {

/// What a person at the console reads by hand on the client's session. It waits with the events running;
/// whoever calls holds the object. A second read inside the first one's wait does nothing.
class ManualReads {
 public:
  /// The arguments outlive the object; the views are `LVfile` and `LVdata`.
  ManualReads(TraceConsole& console, const diag::DiagnosisObject& diagnosis,
              const model::KorvAsapFiles& files, const model::KorvAsapValues& values,
              model::Acquisition& acquisition, ListView& file_view, ListView& data_view);

  /// Executes the requests that carry the chosen values and shows the values. Failures are traced.
  void ReadData();
  /// Reads the identification of every selected file's ECU, shows and traces it. Failures are traced.
  void ReadIdent();

 private:
  using Session = std::shared_ptr<viator3::Session>;

  void ExecuteRequests();
  void ShowValues();
  void IdentifyFiles();
  void Identify(const Session& session, model::KorvAsapFile& file);
  void RequireCurrent(const Session& session) const;

  TraceConsole& console_;
  const diag::DiagnosisObject& diagnosis_;
  const model::KorvAsapFiles& files_;
  const model::KorvAsapValues& values_;
  model::Acquisition& acquisition_;
  ListView& file_view_;
  ListView& data_view_;
  bool reading_ = false;
};

}  // namespace korval::host
