// SPDX-License-Identifier: MIT
// Script variable names, read and written. Each line of the input is one name; one with a tab is written with
// the text behind the tab.
#include <string>
#include <string_view>

#include "fuzz/Input.h"
#include "fuzz/StandingServer.h"
#include "protocol/FieldCodec.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

// More of them are only slower.
constexpr int kMostNames = 4;

void AskFor(fuzz::FuzzServer& server, std::string_view line) {
  const std::size_t tab = line.find('\t');
  base::ByteBuffer area;
  protocol::AppendWord(area, 1);
  protocol::AppendString(area, line.substr(0, tab));
  if (tab == std::string_view::npos) {
    server.SendOverTcp(fuzz::FuzzServer::Framed(114, area.View()));
    return;
  }
  protocol::AppendWord(area, 2);
  protocol::AppendString(area, line.substr(tab + 1));
  server.SendOverTcp(fuzz::FuzzServer::Framed(115, area.View()));
}

void AskForAll(fuzz::FuzzServer& server, fuzz::Input input) {
  const std::string lines = fuzz::TextOf(input.Rest());
  std::string_view text = lines;
  for (int names = 0; names < kMostNames && !text.empty(); ++names) {
    const std::size_t end = text.find('\n');
    AskFor(server, text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::StandingServer standing("ENGINE");
  standing.Serve({data, size}, AskForAll);
  return 0;
}
