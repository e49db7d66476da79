// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "base/ByteBuffer.h"
#include "base/Failure.h"
#include "base/Task.h"
#include "diag/DiagnosisObject.h"
#include "host/trace/ListView.h"
#include "host/trace/TraceConsole.h"
#include "model/Acquisition.h"
#include "protocol/Dispatcher.h"

namespace korval::model {

/// The command "get online value": executes the requests that carry the chosen values and answers the
/// values as reals. A lost link costs one re-initialisation of the ECUs and one repetition. A value that
/// is no number travels as the pattern FF000000.
class OnlineValues {
 public:
  /// The arguments outlive the command; `data_view` is the list `LVdata`.
  OnlineValues(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis, Acquisition& acquisition,
               host::ListView& data_view);

  /// Whether `showvalue` is ticked: the answered values go to the list too.
  void SetShowValue(bool on) { show_value_ = on; }

  void AttachTo(protocol::Dispatcher& dispatcher);
  /// True when values were written, false when an error's number and description were. Raises Failure 1000
  /// without a diagnostic session, also when it ended in a wait.
  base::Task<bool> GetOnlineValue(base::ByteBuffer& reply);

 private:
  using Session = std::shared_ptr<viator3::Session>;
  struct FailedRequest {
    std::string name;
    base::Failure failure;
  };

  base::Task<std::int32_t> Handle(base::ByteBuffer& reply);
  base::Task<std::optional<FailedRequest>> ExecuteUntilFailure(
      Session session, std::shared_ptr<const Acquisition::Requests> requests);
  base::Task<void> ExecuteAll(Session session, std::shared_ptr<const Acquisition::Requests> requests);
  base::Task<bool> Reinitialise(Session session, base::ByteBuffer& reply);
  void RequireCurrent(const Session& session) const;
  void AppendValues(const Acquisition::DataItems& items, base::ByteBuffer& reply);
  void ShowValues(const std::shared_ptr<const Acquisition::DataItems>& items);

  host::TraceConsole& console_;
  const diag::DiagnosisObject& diagnosis_;
  Acquisition& acquisition_;
  host::ListView& data_view_;
  bool show_value_ = false;
};

}  // namespace korval::model
