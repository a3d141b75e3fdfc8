// CBag::LoadSerializedData on arbitrary input (the first byte chooses
// whether the rest is taken as text or Ascii85-encoded first, so that the
// token structure itself gets explored): never a crash, and whatever the
// bag holds afterwards saves, loads into a fresh bag and saves again to the
// same text, with the same keys.
#include <serialization/Bag.h>
#include <text/Ascii85.h>

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  std::string text = rest;
  if (data[0] & 1) {
    if (CAscii85::Encode(rest.data(), rest.size(), text).IsError()) std::abort();
  }
  CBag bag;
  bag.LoadSerializedData(text);

  std::string saved;
  if (bag.GetSerializedData(saved).IsError()) std::abort();  // only loadable types are in it
  CBag copy;
  if (copy.LoadSerializedData(saved).IsError()) std::abort();
  std::string again;
  if (copy.GetSerializedData(again).IsError() || again != saved) std::abort();
  if (copy.allKeys() != bag.allKeys()) std::abort();
  return 0;
}
