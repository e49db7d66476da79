// SPDX-License-Identifier: MIT
#include "fuzz/StandingServer.h"

#include <cstdio>
#include <exception>
#include <utility>

#include "fuzz/Require.h"

namespace korval::fuzz {
namespace {

// Of the server that plays an input, for the report of what it finds.
int inputs_before = 0;

void ReportInputsBefore() {
  std::fprintf(stderr, "fuzz: inputs that its server had served before this one: %d\n", inputs_before);
}

std::terminate_handler usual_terminate = nullptr;

void ReportAndTerminate() {
  ReportInputsBefore();
  usual_terminate();
}

}  // namespace

StandingServer::StandingServer(std::string section) : section_(std::move(section)) {
  if (usual_terminate == nullptr) usual_terminate = std::set_terminate(ReportAndTerminate);
}

void StandingServer::Serve(base::ByteView bytes,
                           const std::function<void(FuzzServer& server, Input input)>& play) {
  if (!server_) Start();
  inputs_before = inputs_served_++;
  server_->SetDebugTrace(bytes.size() % 4 == 0);
  play(*server_, Input(bytes));
  const bool worn = inputs_served_ == kInputsPerServer;
  if (worn) server_->RequireGoodSession();
  if (worn || !server_->IsFileSelected()) server_.reset();
}

void StandingServer::Start() {
  inputs_served_ = 0;
  server_ = std::make_unique<FuzzServer>();
  server_->Select(section_);
  Require(server_->IsFileSelected(), "the section can be selected");
}

}  // namespace korval::fuzz

// The sanitizers' own hook, called with the last line of every report.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" void __sanitizer_report_error_summary(const char* summary) {
  std::fprintf(stderr, "%s\n", summary);
  korval::fuzz::ReportInputsBefore();
}
