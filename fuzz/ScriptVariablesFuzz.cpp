// SPDX-License-Identifier: MIT
// Script variable names, read and written. Each line of the input is one name; one with a tab is written with
// the text behind the tab.
#include <string>
#include <string_view>

#include "fuzz/FuzzServer.h"
#include "fuzz/Input.h"
#include "protocol/FieldCodec.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

// More of them are only slower.
constexpr int kMostNames = 32;

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::FuzzServer server;
  server.Select("ENGINE");
  std::string_view text(reinterpret_cast<const char*>(data), size);
  for (int names = 0; names < kMostNames && !text.empty(); ++names) {
    const std::size_t end = text.find('\n');
    AskFor(server, text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  server.RequireGoodSession();
  return 0;
}
