// SPDX-License-Identifier: MIT
// Any text as hexadecimal digits: it is refused, or its bytes give the same digits again in upper case.
#include <algorithm>
#include <cctype>

#include "base/ByteBuffer.h"
#include "base/Failure.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file
  std::string text = fuzz::TextOf(base::ByteView(data, size));
  base::ByteBuffer bytes;
  const bool digits_only =
      std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
  try {
    bytes = base::ByteBuffer::FromHex(text);
  } catch (const base::Failure&) {
    fuzz::Require(!digits_only || size % 2 != 0, "an even number of digits is read");
    return 0;
  }
  fuzz::Require(digits_only && size % 2 == 0, "nothing but an even number of digits is read");
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  fuzz::Require(bytes.ToHex() == text, "the digits come back");
  return 0;
}
