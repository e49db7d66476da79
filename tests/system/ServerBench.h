// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TempFolder.h"
#include "tests/system/Frames.h"
#include "tests/system/RawClient.h"
#include "tests/system/ServerProcess.h"

namespace korval::tests {

/// The name in the ECU file and the short name of a value.
using DataNames = std::vector<std::pair<std::string, std::string>>;

std::string Section(const std::string& name, const std::string& url, const DataNames& data);
std::string DescriptionFile(const std::string& sections);
/// An ECU file: attributes of its Function, its Request elements, and its Simulation's content.
/// `latency_ms` delays each answer.
std::string EcuFile(const std::string& function, const std::string& requests, const std::string& simulation,
                    int latency_ms = 0);

/// The requests and fixed answers of the ECU that most tests use.
extern const std::string kEngineRequests;
extern const std::string kEngineAnswers;
extern const DataNames kEngineData;

/// A server on a simulated ECU, with all its files in a folder of the test's own. The description file
/// "engine.xml" is there with the section ENGINE_MAP; its ECU answers at once and always the same.
class ServerBench : public ::testing::Test {
 protected:
  using Lines = ServerProcess::Lines;

  ServerBench();

  void WriteDescription(const std::string& name, std::string_view content) const;
  void WriteEcu(const std::string& name, std::string_view content) const;
  /// Writes NAME.xml with the section MAP, and NAME_ecu.xml, which it points to.
  void WritePair(const std::string& name, const std::string& ecu_file, const DataNames& data) const;

  /// The options of every server here but the port and the folders of files.
  std::vector<std::string> SafeOptions() const;
  /// What Start gives the server.
  std::vector<std::string> StartOptions(const std::vector<std::string>& more_options) const;
  /// Starts the server and takes its trace until it listens.
  void Start(const std::vector<std::string>& more_options = {});
  RawClient Connect() const { return RawClient(port_); }
  /// Stops the server; it must end in order.
  void StopInOrder();
  /// Takes the trace up to the server's listening anew after a disconnect.
  Lines TraceUntilListening();

  /// Sends `request`, which must succeed.
  static void Succeed(const RawClient& client, const std::string& request);
  /// An error record with that number and a message that begins so.
  static void ExpectError(const std::string& reply, unsigned number, const std::string& beginning);
  static void Identify(const RawClient& client);
  /// Selects a section and returns the file's number.
  static unsigned Select(const RawClient& client, const std::string& file, const std::string& section);
  /// init, identify and selection of the section ENGINE_MAP, which becomes file 1.
  static void OpenEngine(const RawClient& client);
  /// The same on the section MAP of the file NAME.xml.
  static void OpenPair(const RawClient& client, const std::string& name);
  /// A session from the start to a value: what any client may expect whatever happened before.
  static void ExpectGoodSession(const RawClient& client);

  /// Sends what gets no answer: the trace says so with a line that begins with `beginning`, and the next
  /// answer is the one to a later request.
  void ExpectSilence(const RawClient& client, std::string_view bytes, std::string_view beginning);

  TempFolder folder_;
  std::optional<ServerProcess> server_;
  int port_ = 0;
};

/// Requests that tests repeat.
std::string SelectRequest(const std::string& file, const std::string& section, unsigned address = 0);
std::string GetRequest(unsigned lun, const std::string& name);
std::string SetRequest(unsigned lun, const std::string& name, float value);
std::string AcquisitionRequest(unsigned lun, const std::vector<std::string>& names);
std::string ExtendedGetRequest(unsigned lun, const std::string& name);
std::string ExtendedSetRequest(unsigned lun, const std::string& name, const std::string& value);
/// A request that is answered in every state and touches nothing.
std::string HarmlessRequest();

}  // namespace korval::tests
