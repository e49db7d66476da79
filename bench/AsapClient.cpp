// SPDX-License-Identifier: MIT
#include "bench/AsapClient.h"

#include <stdexcept>

#include "tests/system/Frames.h"

namespace korval::bench {

std::string AsapClient::Ask(std::string_view request) const {
  connection_.Send(request);
  std::string reply(2, '\0');
  connection_.Receive(reply.data(), 2);
  reply.resize(tests::WordAt(reply, 0));
  connection_.Receive(reply.data() + 2, reply.size() - 2);
  if (tests::StatusOf(reply) != tests::kSuccess)
    throw std::runtime_error("the server refuses " + tests::Hex(request) + ": " + tests::ErrorTextOf(reply));
  return reply;
}

void AsapClient::Begin() const {
  Ask(tests::Request(tests::kInit));
  Ask(tests::Request(tests::kIdentify, tests::Word(0x0201) + tests::Text("bench")));
}

unsigned AsapClient::Select(const std::string& description, const std::string& section) const {
  const std::string fields = tests::Text(description) + tests::Text(section) + tests::Word(0);
  return tests::WordAt(tests::DataOf(Ask(tests::Request(tests::kSelectFile, fields))), 0);
}

void AsapClient::Acquire(unsigned lun, const std::vector<std::string>& names) const {
  std::string fields = tests::Word(lun) + tests::Word(0) + tests::Word(static_cast<unsigned>(names.size()));
  for (const std::string& name : names) fields += tests::Text(name);
  Ask(tests::Request(tests::kSetAcquisition, fields));
}

void AsapClient::Exit() const { Ask(tests::Request(tests::kExit)); }

}  // namespace korval::bench
