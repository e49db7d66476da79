// SPDX-License-Identifier: MIT
#include "tests/system/NetworkNamespaces.h"

#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

namespace korval::tests {
namespace {

bool Succeeds(const std::string& command) { return std::system(command.c_str()) == 0; }

void Do(const std::string& command) {
  if (!Succeeds(command)) throw std::runtime_error("failed: " + command);
}

const std::string kIp = KORVAL_IP;
const std::string kTc = KORVAL_TC;

}  // namespace

NetworkNamespaces::NetworkNamespaces()
    : server_("korval-s" + std::to_string(getpid())), client_("korval-c" + std::to_string(getpid())) {
  are_allowed_ = Succeeds(kIp + " netns add " + server_ + " 2>/dev/null");
  if (!are_allowed_) return;
  Do(kIp + " netns add " + client_);
  Do(kIp + " -n " + server_ + " link add wire type veth peer name wire netns " + client_);
  Do(kIp + " -n " + server_ + " addr add " + kServerAddress + "/30 dev wire");
  Do(kIp + " -n " + client_ + " addr add " + kClientAddress + "/30 dev wire");
  for (const std::string& name : {server_, client_}) {
    Do(kIp + " -n " + name + " link set wire up gso_max_segs 1");
    // A bucket that holds one segment and no more is a wire.
    Do(kTc + " -n " + name + " qdisc add dev wire root tbf rate 10mbit burst 1540 limit 300000");
  }
}

NetworkNamespaces::~NetworkNamespaces() {
  if (!are_allowed_) return;
  for (const std::string& name : {server_, client_}) Succeeds(kIp + " netns del " + name);
}

void NetworkNamespaces::InClient(const std::function<void()>& work) const {
  const int own = open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
  const int client = open(("/run/netns/" + client_).c_str(), O_RDONLY | O_CLOEXEC);
  if (setns(client, CLONE_NEWNET) != 0) throw std::runtime_error("no way into the client's network");
  work();
  if (setns(own, CLONE_NEWNET) != 0) throw std::runtime_error("no way back into the own network");
  close(client);
  close(own);
}

void NetworkNamespaces::CutTheWire() const { Do(kIp + " -n " + client_ + " link set wire down"); }

}  // namespace korval::tests
