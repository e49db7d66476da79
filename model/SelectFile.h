// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/Task.h"
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

  SelectFile(const SelectFile&) = delete;
  SelectFile& operator=(const SelectFile&) = delete;

  void AttachTo(protocol::Dispatcher& dispatcher);
  base::Task<std::int32_t> Handle(base::ByteView parameters, base::ByteBuffer& reply);

 private:
  using Session = std::shared_ptr<viator3::Session>;
  // An ECU function that files were selected for.
  struct Function {
    std::string serving;  // path of the ECU file
    std::string protocol;
    std::vector<std::int32_t> unidentified;  // positions of files in the collection
  };

  base::Task<std::shared_ptr<KorvAsapFile>> Select(Session session, std::string description_file,
                                                   base::ByteView parameters, std::size_t position);
  base::Task<void> LoadMessaging(Session session, std::string path);
  void TraceServingFile(const KorvAsapFile& file);
  void ForgetOldSession();
  base::Task<void> RebuildFileView(Session session);
  void SortInNewFiles();
  base::Task<bool> AskFunctions(Session session);
  base::Task<bool> Identify(Session session, std::shared_ptr<viator3::Ecu> ecu, std::string function);
  std::vector<std::shared_ptr<KorvAsapFile>> Unidentified(const std::string& function);
  bool IsCurrent(const Session& session) const;
  void AddRows();

  host::TraceConsole& console_;
  const diag::DiagnosisObject& diagnosis_;
  KorvAsapFiles& files_;
  host::ListView& file_view_;
  std::function<void()> on_selected_;
  std::map<std::string, Function> functions_;  // by name, of the files of this generation
  unsigned generation_ = 0;
  std::int32_t sorted_in_ = 0;                                               // files
  std::shared_ptr<SelectFile*> self_ = std::make_shared<SelectFile*>(this);  // for what outlives it
};

}  // namespace korval::model
