// Base64: decoding arbitrary text never reads or writes outside its buffers,
// and what was decoded encodes back to a text that decodes to the same bytes.
#include <text/ZuBase64.h>

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::string decoded = ZuBase64::Decode(text);
  if (ZuBase64::Decode(ZuBase64::Encode(decoded)) != decoded) std::abort();
  if (ZuBase64::Decode(ZuBase64::Encode_url(decoded)) != decoded) std::abort();
  return 0;
}
