// SPDX-License-Identifier: MIT
// Any bytes as DBC file: whatever is read has a place in a CAN frame and can be decoded.
#include "base/Failure.h"
#include "ecu/dbc/DbcMessaging.h"
#include "ecu/description/ItemCoding.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file
  static const base::ByteBuffer kFrame{0xFF, 0x00, 0xA5, 0x5A, 0x80, 0x01, 0x7F, 0xFE};
  const std::string content = fuzz::TextOf(base::ByteView(data, size));
  const ecu::MessagingFile file = ecu::ReadDbc(content);
  fuzz::Require(file.notes.size() <= 101, "notes are bounded");
  for (const auto& frame : file.frames) {
    fuzz::Require(!frame.name.empty(), "a frame has a name");
    if (frame.multiplexor) ecu::DecodeRaw(frame.multiplexor->item, kFrame.View());
    for (const auto& item : frame.items) {
      fuzz::Require(!item.name.empty() && item.bits >= 1 && item.BytesNeeded() <= 8,
                    "an item lies in a frame");
      const base::Variant value = ecu::DecodeItem(item, kFrame.View());
      fuzz::Require(!value.IsEmpty(), "a full frame gives every item a value");
      ecu::DecodeText(item, kFrame.View());
    }
  }
  return 0;
}
