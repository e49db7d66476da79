// SPDX-License-Identifier: MIT
// Any bytes as ECU file: loaded or refused, and whatever is loaded can be used on the simulated ECU that the
// same file describes.
#include <memory>
#include <string>

#include "base/Failure.h"
#include "base/XmlFile.h"
#include "fuzz/DriveEcu.h"
#include "fuzz/FuzzServer.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

void UseByName(viator3::Session& session, const std::shared_ptr<viator3::Ecu>& ecu) {
  const auto instance = session.CreateInstance("qor4inst.FUZZ");
  instance->SetProtocol(ecu);
  instance->SetNameResolver([](const std::string& name) { return name == "Short" ? "U" : std::string(); });
  for (const char* name : {"U", "Short", "W", ""}) {
    try {
      tests::Await(instance->Get(name));
      tests::Await(instance->Set(name, 3.5F));
    } catch (const base::Failure& failure) {
      fuzz::Require(!failure.Description().empty(), "a refusal says why");
    }
  }
}

void UseFile(const base::XmlDocument& document) {
  const std::string function =
      document->child("xml").child("qor:Target").child("Function").attribute("Name").value();
  const auto session = fuzz::SimulatedSession(std::make_shared<tests::ManualEventLoop>());
  tests::Await(session->SetPort(session->Port()));
  session->OfferEcuFile(tests::EcuFileOf("fuzzed.xml", document));
  const auto ecu = session->EcuByFunction(function);
  fuzz::DriveEcu(*ecu);
  UseByName(*session, ecu);
  tests::Await(ecu->Reinitialise());
  tests::Await(session->Close());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    UseFile(base::LoadXmlText(fuzz::TextOf(base::ByteView(data, size)), "fuzzed.xml"));
  } catch (const base::Failure& failure) {
    fuzz::Require(!failure.Description().empty(), "a refusal says why");
  }
  return 0;
}
