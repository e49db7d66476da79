// SPDX-License-Identifier: MIT
// Any sequence of fields, read from any bytes: a field is either read or refused, and what was read is
// written back as the bytes it was read from.
#include <cmath>
#include <functional>

#include "base/AnsiText.h"
#include "base/ByteBuffer.h"
#include "base/Failure.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"
#include "protocol/FieldCodec.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

void CopyField(std::uint8_t kind, base::ByteView area, std::size_t& position, base::ByteBuffer& copy) {
  switch (kind % 4) {
    case 0:
      return protocol::AppendWord(copy, protocol::ReadWord(area, position));
    case 1:
      return protocol::AppendReal(copy, protocol::ReadReal(area, position));
    case 2:
      return protocol::AppendReal8(copy, protocol::ReadReal8(area, position));
    default:
      return protocol::AppendString(copy, protocol::ReadString(area, position));
  }
}

// The fill byte of a string is written as zero whatever was received, and longer texts are cut.
bool IsFaithful(std::uint8_t kind, base::ByteView read, base::ByteView written) {
  if (read.size() != written.size()) return kind % 4 == 3 && read.size() > protocol::kMaxStringLength;
  const std::size_t compared =
      kind % 4 == 3 && read.size() > 2 && (read[1] % 2) == 1 ? read.size() - 1 : read.size();
  return std::equal(read.begin(), read.begin() + static_cast<std::ptrdiff_t>(compared), written.begin());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const base::ByteView kinds = input.Take(input.Byte() % 16U);
  const base::ByteView area = input.Rest();
  std::size_t position = 0;
  for (const std::uint8_t kind : kinds) {
    const std::size_t before = position;
    base::ByteBuffer copy;
    try {
      CopyField(kind, area, position, copy);
    } catch (const base::Failure&) {
      fuzz::Require(position == before, "a refused field leaves the position where it was");
      return 0;
    }
    fuzz::Require(position <= area.size(), "no field is read beyond the area");
    fuzz::Require(IsFaithful(kind, area.subspan(before, position - before), copy.View()),
                  "a field that was read is written back as it was");
  }
  return 0;
}
