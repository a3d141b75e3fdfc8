// Base64: decoding arbitrary text never reads or writes outside its buffers,
// and what was decoded encodes back to a text that decodes to the same bytes.
#include <text/ZuBase64.h>

#include "FuzzCheck.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::string decoded = ZuBase64::Decode(text);
  FUZZ_CHECK(ZuBase64::Decode(ZuBase64::Encode(decoded)) == decoded);
  FUZZ_CHECK(ZuBase64::Decode(ZuBase64::Encode_url(decoded)) == decoded);
  return 0;
}
