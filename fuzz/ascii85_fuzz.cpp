// Ascii85: decoding arbitrary text stays inside its buffers, the two Decode
// forms agree, and whatever decodes encodes back to a text that decodes to
// the same bytes. The input's bytes themselves also survive an
// encode/decode round trip.
#include <text/Ascii85.h>

#include "FuzzCheck.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Decodes with the allocating form; the caller's-buffer form must agree on
// the outcome and, where it succeeds, on the bytes.
bool Decode(const std::string& text, std::string& bytes) {
  auto_ptr_array<char> owned;
  std::size_t ownedLength = 0;
  const bool ok = CAscii85::Decode(text, owned, ownedLength).GetErrorCode() >= 0;
  // Four bytes a group of five characters, one 'z' a whole group.
  std::vector<char> buffer(text.size() * 4 + 4);
  std::size_t length = buffer.size();
  const bool okInto = CAscii85::Decode(text, buffer.data(), length).GetErrorCode() >= 0;
  FUZZ_CHECK(ok == okInto);
  if (!ok) return false;
  FUZZ_CHECK(length == ownedLength && std::memcmp(buffer.data(), owned.get(), length) == 0);
  bytes.assign(owned.get(), ownedLength);
  // One byte short of the need fails with the bytes of the whole groups
  // before it, never beyond the buffer.
  if (length > 0) {
    std::vector<char> tight(length - 1);
    std::size_t tightLength = tight.size();
    FUZZ_CHECK(CAscii85::Decode(text, tight.data(), tightLength).IsError());
    FUZZ_CHECK(tightLength <= tight.size());
    FUZZ_CHECK(tightLength == 0 || std::memcmp(tight.data(), bytes.data(), tightLength) == 0);
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);

  std::string decoded;
  if (Decode(input, decoded)) {
    std::string text;
    FUZZ_CHECK(CAscii85::Encode(decoded.data(), decoded.size(), text).GetErrorCode() >= 0);
    std::string again;
    FUZZ_CHECK(Decode(text, again) && again == decoded);
  }

  std::string encoded;
  FUZZ_CHECK(CAscii85::Encode(input.data(), input.size(), encoded).GetErrorCode() >= 0);
  std::string back;
  FUZZ_CHECK(Decode(encoded, back) && back == input);
  return 0;
}
