// SPDX-License-Identifier: MIT
// A computer that does something else for 5 to 250 ms, at any moment of an exchange: nothing that arrived
// meanwhile is lost, and what was being sent is sent anew.
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>

#include <sched.h>

#include "tests/system/FreePort.h"
#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using std::chrono::duration;
using std::chrono::milliseconds;

constexpr unsigned kSeed = 20261121;

const std::string kBusyRequests = R"(
    <Request Name="READ_SHORT"><Sent Bytes="2101"/><Received MinBytes="4">
      <DataItem Name="Speed" Ref="1" FirstByte="3" BitsCount="16" Step="0.25"/></Received></Request>
    <Request Name="READ_LONG"><Sent Bytes="2102"/><Received MinBytes="62">
      <DataItem Name="Name" Ref="1" FirstByte="3" BitsCount="480" Coding="ascii"/></Received></Request>)";
const std::string kBusySimulation = R"(
    <Signal Item="Speed" Wave="constant" Value="800"/>
    <Signal Item="Name" Wave="constant" Value="a text that needs nine frames of a CAN bus to come over it"/>)";
const DataNames kBusyData{{"Speed", "N"}, {"Name", "NAME"}};

/// Stops a process for 5 to 250 ms, short times more often than long ones, and lets it run in between.
class Disturbance {
 public:
  Disturbance(const ServerProcess& process, milliseconds running)
      : thread_([this, &process, running] { Run(process, running); }) {}
  ~Disturbance() {
    ended_ = true;
    thread_.join();
  }
  Disturbance(const Disturbance&) = delete;
  Disturbance& operator=(const Disturbance&) = delete;
  int Stops() const { return stops_; }

 private:
  void Run(const ServerProcess& process, milliseconds running) {
    std::mt19937 random(kSeed);
    std::uniform_real_distribution<double> exponent(std::log(5.0), std::log(250.0));
    std::exponential_distribution<double> pause(1.0 / static_cast<double>(running.count()));
    while (!ended_) {
      std::this_thread::sleep_for(duration<double, std::milli>(pause(random)));
      process.Signal(SIGSTOP);
      std::this_thread::sleep_for(duration<double, std::milli>(std::exp(exponent(random))));
      process.Signal(SIGCONT);
      ++stops_;
    }
  }

  std::atomic<bool> ended_ = false;
  std::atomic<int> stops_ = 0;
  std::thread thread_;
};

class BusyComputerTest : public ServerBench {
 protected:
  /// `function` are attributes of its element; `port` is the server's, `wire` the simulator's.
  void StartOn(const std::string& port, const std::vector<std::string>& wire, const std::string& function,
               std::vector<std::string> server = {}) {
    WritePair("busy",
              EcuFile(R"(Name="ENGINE" Ecu="Engine control" RequestId="7E0" ResponseId="7E8" )" + function,
                      kBusyRequests, kBusySimulation),
              kBusyData);
    std::vector<std::string> options{"--ecu", folder_.Path("korv/busy_ecu.xml")};
    options.insert(options.end(), wire.begin(), wire.end());
    ecu_ = std::make_unique<ServerProcess>(options, folder_.Path("home"), KORVAL_ECU_SIM);
    ecu_->WaitFor("Engine control answers on");
    server.insert(server.end(), {"--diag-port", port});
    Start(server);
  }
  void StartOnKLine(const std::string& function, const std::vector<std::string>& server = {}) {
    const std::string line = folder_.Path("kline");
    // Short pauses make the test short; none of them is a limit.
    StartOn(line, {"--kline", line}, R"(P2MinMs="5" P3Ms="5" TIdleMs="20" )" + function, server);
  }
  void StartOnCan(const std::string& function) {
    const std::string bus = "virtualcan:tcp://127.0.0.1:" + std::to_string(FreePort()) + "/can0";
    StartOn("CAN:" + bus, {"--can", bus}, function);
  }

  /// So many values are read while `disturbed` is stopped again and again; each of them comes.
  void ExpectAllValues(int exchanges, const ServerProcess& disturbed, milliseconds running) {
    const RawClient client = Connect();
    OpenPair(client, "busy");
    const std::pair<std::string, std::string> requests[]{{GetRequest(1, "N"), ""},
                                                         {ExtendedGetRequest(1, "NAME"), ""}};
    std::string expected[2];
    for (int kind = 0; kind < 2; ++kind) {
      const std::string reply = client.Ask(requests[kind].first);
      ASSERT_EQ(StatusOf(reply), kSuccess);
      expected[kind] = Hex(reply);
    }
    const Disturbance disturbance(disturbed, running);
    int lost = 0;
    for (int exchange = 0; exchange < exchanges; ++exchange) {
      const int kind = exchange % 2;
      const std::string reply = client.Ask(requests[kind].first);
      if (Hex(reply) == expected[kind]) continue;
      ++lost;
      ADD_FAILURE() << "exchange " << exchange << ": " << ErrorTextOf(reply);
    }
    std::cout << "seed " << kSeed << ": " << disturbance.Stops() << " stops, " << lost << " of " << exchanges
              << " exchanges lost\n";
    EXPECT_GT(disturbance.Stops(), 0);
  }

  std::unique_ptr<ServerProcess> ecu_;
};

// Nothing is asked for a second time here, so that every exchange counts.
TEST_F(BusyComputerTest, TheServerIsHeldUpOnAKLine) {
  StartOnKLine(R"(P4Ms="0" Repeats="0")");
  ExpectAllValues(300, *server_, milliseconds(40));
  StopInOrder();
}

// The bytes of a request have gaps here, which must not become too long: what else the computer does shall
// not disturb the test.
TEST_F(BusyComputerTest, TheServerIsHeldUpBetweenTheBytesOfItsRequests) {
  StartOnKLine(R"(Repeats="0")", {"--realtime"});
  ExpectAllValues(60, *server_, milliseconds(100));
  StopInOrder();
}

TEST_F(BusyComputerTest, TheServerIsHeldUpOnCan) {
  StartOnCan(R"(Repeats="0")");
  ExpectAllValues(500, *server_, milliseconds(20));
  StopInOrder();
}

TEST_F(BusyComputerTest, RealTimeSchedulingLastsAsLongAsTheKLineIsOpen) {
  StartOnKLine("", {"--realtime"});
  EXPECT_EQ(server_->Scheduling(), SCHED_OTHER);
  const RawClient client = Connect();
  OpenPair(client, "busy");
  Succeed(client, GetRequest(1, "N"));
  if (server_->Scheduling() != SCHED_RR) {
    EXPECT_THAT(server_->WaitFor("Real-time scheduling is refused"), ::testing::HasSubstr("rtprio 10"));
  }
  Succeed(client, Request(kExit));
  WaitUntil([this] { return server_->Scheduling() == SCHED_OTHER; });
  StopInOrder();
}

// An ECU that is held up answers late, and with gaps between its bytes; it is given the time for that.
TEST_F(BusyComputerTest, TheSimulatorIsHeldUpOnAKLine) {
  StartOnKLine(R"(P4Ms="0" Repeats="0" P1Ms="1000" P2Ms="2000")");
  ExpectAllValues(60, *ecu_, milliseconds(40));
  StopInOrder();
}

TEST_F(BusyComputerTest, TheSimulatorIsHeldUpOnCan) {
  StartOnCan(R"(Repeats="0" P2Ms="2000")");
  ExpectAllValues(100, *ecu_, milliseconds(20));
  StopInOrder();
}

}  // namespace
}  // namespace korval::tests
