// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/ByteBuffer.h"
#include "base/Job.h"
#include "diag/DiagnosisObject.h"
#include "diag/WindowsScript.h"
#include "host/trace/StatusView.h"
#include "host/trace/TextTerminal.h"
#include "host/trace/TraceConsole.h"
#include "model/Acquisition.h"
#include "model/KorvAsapFiles.h"
#include "model/KorvAsapValues.h"
#include "model/OnlineValues.h"
#include "model/SelectFile.h"
#include "model/SetAcquisition.h"
#include "parameters/ExtendedParameter.h"
#include "parameters/GetSetParameter.h"
#include "protocol/Dispatcher.h"
#include "tests/support/FakeSession.h"
#include "tests/support/ManualEventLoop.h"
#include "tests/support/RecordingListView.h"
#include "tests/support/TempFolder.h"

namespace korval::tests {

/// The parameter area of a request, field by field.
class Fields {
 public:
  Fields& Word(std::int32_t value);
  Fields& Real(float value);
  Fields& Real8(double value);
  Fields& String(const std::string& text);
  base::ByteView View() const { return bytes_.View(); }

 private:
  base::ByteBuffer bytes_;
};

struct Reply {
  /// Of a command that was called off.
  static constexpr std::int32_t kNone = -1;

  std::int32_t status = kNone;
  base::ByteBuffer data;
};

/// The commands on a scripted session, behind a real dispatcher, without any transport. Starts in the
/// state "identify done" with a description file "engine.xml" whose section ENGINE maps the short names N and
/// T, and an ECU file "engine_ecu.xml" for the function MOTOR.
class CommandBench {
 public:
  CommandBench();

  Reply Run(protocol::CommandCode code, const Fields& fields);
  /// What was traced since the last call.
  std::string TakeTrace();
  /// Selects the description file's section ENGINE, and forgets the traces.
  void SelectEngine();
  /// What a disconnect does.
  void EndSession();

 private:
  class SilentStatus : public host::StatusView {
   public:
    void ShowSessionStatus(const std::string&) override {}
    void ShowRemoteSystem(const std::string&) override {}
    void ShowPanel(const std::string&, const std::string&) override {}
    void ShowConnected(bool) override {}
  };
  class Services : public protocol::SessionServices {
   public:
    explicit Services(CommandBench& bench) : bench_(bench) {}
    base::Task<bool> CreateDiagnosisObject(base::ByteBuffer& reply) override {
      return bench_.diagnosis.CreateDiagnosisObject(reply);
    }
    void ClearAcquiredDataView() override { bench_.data_view.Clear(); }
    void EndSession() override;
    bool ReleaseForPowerRequest(bool) override { return false; }

   private:
    CommandBench& bench_;
  };

  std::string trace_;
  SilentStatus status_;
  Services services_{*this};

 public:
  TempFolder folder;
  ManualEventLoop loop;
  base::Job* command = nullptr;  // that is being run
  std::shared_ptr<FakeSession> session = std::make_shared<FakeSession>();
  std::shared_ptr<FakeEcu> engine = session->AddEcu("MOTOR", "Engine control", "KWP2000");
  host::TextTerminal terminal{[this](std::string_view text) { trace_ += text; }};
  host::TraceConsole console{terminal};
  RecordingListView file_view;
  RecordingListView data_view;
  protocol::SessionState state{status_};
  protocol::PowerRequest power_request = protocol::PowerRequest::kNone;
  model::Folders folders{folder.Path(), folder.Path()};
  model::KorvAsapFiles files{folders};
  model::KorvAsapValues values;
  model::Acquisition acquisition;
  diag::DiagnosisObject diagnosis;
  diag::WindowsScript script{diagnosis};
  model::SelectFile select_file;
  model::SetAcquisition set_acquisition{console, diagnosis, files, values, acquisition, data_view};
  model::OnlineValues online_values{console, diagnosis, acquisition, data_view};
  parameters::GetSetParameter get_set{console, files, script};
  parameters::ExtendedParameter extended{console, diagnosis, files, script, power_request};
  protocol::Dispatcher dispatcher{console, state, services_};
};

}  // namespace korval::tests
