// SPDX-License-Identifier: MIT
#include "bench/ExampleFiles.h"

#include <cstdio>

namespace korval::bench {
namespace {

constexpr int kFirstLocalIdentifier = 0x1000;

std::string Hex4(int value) {
  char text[16];
  std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(value) & 0xFFFFU);
  return text;
}

std::string DataItem(int index, int position) {
  return "      <DataItem Name=\"" + ItemName(index) + "\" Ref=\"1\" FirstByte=\"" +
         std::to_string(4 + 2 * position) +
         "\" BitOffset=\"0\" BitsCount=\"16\" Coding=\"unsigned\" ByteOrder=\"big\" Step=\"0.25\" "
         "Offset=\"-40\""
         " Unit=\"km/h\" Comment=\"Generated measurement of the bench\"/>\n";
}

std::string Request(int number, int first, int count) {
  const std::string identifier = Hex4(kFirstLocalIdentifier + number);
  std::string text = "    <Request Name=\"READ_" + identifier + "\">\n      <Sent Bytes=\"21" + identifier +
                     "\"/>\n      <Received MinBytes=\"" + std::to_string(3 + 2 * count) + "\">\n";
  for (int i = 0; i < count; ++i) text += DataItem(first + i, i);
  return text + "      </Received>\n    </Request>\n";
}

}  // namespace

std::string ExampleDescriptions() { return KORVAL_EXAMPLES "/asap"; }
std::string ExampleEcuFiles() { return KORVAL_EXAMPLES "/ecu"; }

std::string ItemName(int index) { return "Measurement" + std::to_string(index); }

std::string DescriptionFile(int items) {
  std::string text = "<?xml version=\"1.0\"?>\n<xml>\n  <ecu name=\"BENCH\" url=\"bench.xml\">\n";
  for (int i = 0; i < items; ++i)
    text += "    <data name=\"" + ItemName(i) + "\" shortname=\"" + ItemName(i) + "\"/>\n";
  return text + "  </ecu>\n</xml>\n";
}

std::string EcuFile(int items, int per_request, int moving) {
  std::string text =
      "<?xml version=\"1.0\"?>\n<xml xmlns:qor=\"urn:korval:ecu\">\n  <qor:Target>\n"
      "  <Function Name=\"BENCH\" Ecu=\"Bench\" Protocol=\"KWP2000\"/>\n  <Requests>\n";
  for (int first = 0; first < items; first += per_request)
    text += Request(first / per_request, first, per_request);
  text +=
      "  </Requests>\n  </qor:Target>\n  <Simulation>\n    <Answer Request=\"2180\" "
      "Response=\"6180414243\"/>\n";
  for (int i = 0; i < items; i += items / moving)
    text += "    <Signal Item=\"" + ItemName(i) +
            "\" Wave=\"sine\" Min=\"0\" Max=\"9000\" PeriodMs=\"10000\"/>\n";
  return text + "  </Simulation>\n</xml>\n";
}

}  // namespace korval::bench
