// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/ByteBuffer.h"
#include "diag/DiagnosisObject.h"
#include "host/trace/ListView.h"
#include "host/trace/TraceConsole.h"
#include "model/Acquisition.h"
#include "model/KorvAsapFiles.h"
#include "model/KorvAsapValues.h"
#include "protocol/Dispatcher.h"

namespace korval::model {

/// The command "parameter for value acquisition": chooses the values that get online value answers.
class SetAcquisition {
 public:
  /// The arguments outlive the command; `data_view` is the list `LVdata`.
  SetAcquisition(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis,
                 const KorvAsapFiles& files, KorvAsapValues& values, Acquisition& acquisition,
                 host::ListView& data_view);

  SetAcquisition(const SetAcquisition&) = delete;
  SetAcquisition& operator=(const SetAcquisition&) = delete;

  void AttachTo(protocol::Dispatcher& dispatcher);
  std::int32_t Handle(base::ByteView parameters, base::ByteBuffer& reply);

 private:
  struct Choice {
    std::string value_name;
    std::string korv_name;
    const char* duplicate_mark;
  };

  std::int32_t Choose(const KorvAsapFile& file, std::int32_t count, base::ByteView names,
                      const std::string& head, base::ByteBuffer& reply);
  std::string ChooseValue(const KorvAsapFile& file, const std::string& name);
  static Choice Understand(const KorvAsapFile& file, const std::string& name);
  void RebuildDataView();
  void AddRows();

  host::TraceConsole& console_;
  const diag::DiagnosisObject& diagnosis_;
  const KorvAsapFiles& files_;
  KorvAsapValues& values_;
  Acquisition& acquisition_;
  host::ListView& data_view_;
  std::shared_ptr<SetAcquisition*> self_ = std::make_shared<SetAcquisition*>(this);  // for what outlives it
};

}  // namespace korval::model
