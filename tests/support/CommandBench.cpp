// SPDX-License-Identifier: MIT
#include "tests/support/CommandBench.h"

#include <utility>

#include "protocol/FieldCodec.h"
#include "tests/support/Await.h"

namespace korval::tests {
namespace {

constexpr char kDescription[] =
    "<xml><ecu name='ENGINE' url='engine_ecu.xml'>"
    "<data name='EngineSpeed' shortname='N'/><data name='CoolantTemp' shortname='T'/>"
    "</ecu></xml>";

constexpr char kEcuFile[] =
    "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='MOTOR'/><Requests><Request Name='READ'>"
    "<Received><DataItem Name='EngineSpeed' Ref='1'/><DataItem Name='CoolantTemp' Ref='1'/></Received>"
    "</Request></Requests></qor:Target></xml>";

}  // namespace

Fields& Fields::Word(std::int32_t value) {
  protocol::AppendWord(bytes_, value);
  return *this;
}

Fields& Fields::Real(float value) {
  protocol::AppendReal(bytes_, value);
  return *this;
}

Fields& Fields::Real8(double value) {
  protocol::AppendReal8(bytes_, value);
  return *this;
}

Fields& Fields::String(const std::string& text) {
  protocol::AppendString(bytes_, text);
  return *this;
}

CommandBench::CommandBench()
    : diagnosis(
          console, [this] { return session; },
          [this] {
            acquisition.Drop();
            files.Clear();
            values.Clear();
          }),
      select_file(console, diagnosis, files, file_view,
                  [this] { state.Set(protocol::SessionState::State::kFileSelected); }) {
  folder.Write("engine.xml", kDescription);
  folder.Write("engine_ecu.xml", kEcuFile);
  select_file.AttachTo(dispatcher);
  set_acquisition.AttachTo(dispatcher);
  online_values.AttachTo(dispatcher);
  get_set.AttachTo(dispatcher);
  extended.AttachTo(dispatcher);
  base::ByteBuffer reply;
  Await(diagnosis.CreateDiagnosisObject(reply));
  state.Set(protocol::SessionState::State::kIdentify);
  TakeTrace();
}

Reply CommandBench::Run(protocol::CommandCode code, const Fields& fields) {
  const auto dispatch = [](CommandBench& bench, protocol::CommandCode number, base::ByteView parameters,
                           Reply& filled) -> base::Task<void> {
    filled.status =
        co_await bench.dispatcher.Dispatch(static_cast<std::int32_t>(number), parameters, filled.data);
  };
  Reply reply;
  base::Job job;
  base::Job* const outer = std::exchange(command, &job);
  if (!job.Start(dispatch(*this, code, fields.View(), reply))) {
    loop.RunUntil(base::TimePoint::max(), [&] { return !job.IsUnderWay(); });
  }
  command = outer;
  return reply;
}

std::string CommandBench::TakeTrace() { return std::exchange(trace_, {}); }

void CommandBench::SelectEngine() {
  Run(protocol::CommandCode::kSelectFile, Fields().String("engine.xml").String("ENGINE").Word(0));
  TakeTrace();
}

void CommandBench::EndSession() {
  state.Set(protocol::SessionState::State::kIdle);
  services_.EndSession();
}

void CommandBench::Services::EndSession() {
  bench_.data_view.Clear();
  bench_.file_view.Clear();
  bench_.diagnosis.ReleaseDiagnosisObject();
}

}  // namespace korval::tests
