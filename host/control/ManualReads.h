// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "base/Job.h"
#include "base/Task.h"
#include "diag/DiagnosisObject.h"
#include "host/trace/ListView.h"
#include "host/trace/TraceConsole.h"
#include "model/Acquisition.h"
#include "model/KorvAsapFiles.h"
#include "model/KorvAsapValues.h"

namespace korval::host {

/// What a person at the console reads by hand on the client's session. A second read while the first one is
/// under way does nothing.
class ManualReads {
 public:
  /// The arguments outlive the object; the views are `LVfile` and `LVdata`.
  ManualReads(TraceConsole& console, const diag::DiagnosisObject& diagnosis,
              const model::KorvAsapFiles& files, const model::KorvAsapValues& values,
              model::Acquisition& acquisition, ListView& file_view, ListView& data_view);

  /// `owner` owns this and everything it works on; it is held for the length of each step.
  void Bind(const std::weak_ptr<void>& owner) { read_.SetOwner(owner); }

  /// Executes the requests that carry the chosen values and shows the values. Failures are traced.
  void ReadData();
  /// Reads the identification of every selected file's ECU, shows and traces it. Failures are traced.
  void ReadIdent();
  /// Drops the read that is under way.
  void Stop() { read_.CallOff(); }

 private:
  using Session = std::shared_ptr<viator3::Session>;

  void Read(base::Task<void> read);
  base::Task<void> ReadDataTask();
  base::Task<void> ReadIdentTask();
  base::Task<void> ExecuteRequests();
  void ShowValues();
  base::Task<void> IdentifyFiles();
  base::Task<void> Identify(Session session, std::shared_ptr<model::KorvAsapFile> file);
  void RequireCurrent(const Session& session) const;

  TraceConsole& console_;
  const diag::DiagnosisObject& diagnosis_;
  const model::KorvAsapFiles& files_;
  const model::KorvAsapValues& values_;
  model::Acquisition& acquisition_;
  ListView& file_view_;
  ListView& data_view_;
  base::Job read_;
};

}  // namespace korval::host
