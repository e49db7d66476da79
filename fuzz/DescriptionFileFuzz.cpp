// SPDX-License-Identifier: MIT
// Any bytes as description file, with good ECU files beside it: it is loaded, or refused with a sentence.
#include <fstream>
#include <string>

#include "base/Failure.h"
#include "ecu/ecufile/XmlEcuFileCache.h"
#include "fuzz/FuzzServer.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"
#include "model/KorvAsapFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file
  const std::string& folder = fuzz::FuzzFolder();
  std::ofstream(folder + "/fuzzed.xml", std::ios::binary) << fuzz::TextOf(base::ByteView(data, size));
  model::KorvAsapFile file({folder, folder}, "fuzzed.xml", "ENGINE", 0, 1);
  ecu::XmlEcuFileCache ecu_files;
  try {
    file.ReadDescriptionFile([&](const std::string& path) { return ecu_files.Read(path); });
    fuzz::Require(!file.KorvFunction().empty(), "a loaded file has a function");
    if (file.IsDataExist("Speed")) {
      fuzz::Require(!file.KorvDataName("Speed").empty(), "a short name leads to a data item");
    }
    file.GetAutoCanFile();
  } catch (const base::Failure& failure) {
    fuzz::Require(!failure.Description().empty(), "a refusal says why");
  }
  return 0;
}
