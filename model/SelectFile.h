// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/ByteBuffer.h"
#include "diag/DiagnosisObject.h"
#include "host/trace/ListView.h"
#include "host/trace/TraceConsole.h"
#include "model/KorvAsapFiles.h"
#include "protocol/Dispatcher.h"

namespace korval::model {

/// The command "select file": loads a description file with its ECU file and answers its id.
class SelectFile {
 public:
  /// `on_selected` is told of a successful selection, before the ECUs are asked for their identification.
  /// The other arguments outlive the command; `file_view` is the list `LVfile`.
  SelectFile(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis, KorvAsapFiles& files,
             host::ListView& file_view, std::function<void()> on_selected);

  void AttachTo(protocol::Dispatcher& dispatcher);
  std::int32_t Handle(base::ByteView parameters, base::ByteBuffer& reply);

 private:
  using Session = std::shared_ptr<viator3::Session>;

  std::shared_ptr<KorvAsapFile> Select(const Session& session, const std::string& description_file,
                                       base::ByteView parameters, std::size_t position);
  void LoadMessaging(viator3::Session& session, const std::string& path);
  void RebuildFileView(const Session& session);
  bool IdentifyEcus(const Session& session);

  host::TraceConsole& console_;
  const diag::DiagnosisObject& diagnosis_;
  KorvAsapFiles& files_;
  host::ListView& file_view_;
  std::function<void()> on_selected_;
};

}  // namespace korval::model
