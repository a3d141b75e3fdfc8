// The token parser: arbitrary bytes and arbitrary text never crash it, and
// what it accepts writes back through the writers into a stream that parses
// to the same tokens and writes the same bytes again. Text that decodes as
// Ascii85 loads exactly as its decoded bytes do.
#include <serialization/SerializedBuffer.h>
#include <text/Ascii85.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

// Accepts every token type and writes each straight back.
class CEcho : public CSerializedBase {
 public:
  CSerializedBuffer buffer;
  CZuError status = CZuError::Success();

  std::string Bytes() const { return std::string(buffer.GetBuffer() ? buffer.GetBuffer() : "", buffer.GetBufferSize()); }

  CZuError LoadToken(DWORD id, void* sid) override { return Keep(AddToken(&buffer, id, sid)); }
  CZuError LoadToken(DWORD id, const LUID& v) override { return Keep(AddToken(&buffer, id, v)); }
  CZuError LoadToken(DWORD id, const GUID& v) override { return Keep(AddToken(&buffer, id, v)); }
  CZuError LoadToken(DWORD id, const FILETIME& v) override { return Keep(AddToken(&buffer, id, v)); }
  CZuError LoadToken(DWORD id, bool v) override { return Keep(AddToken(&buffer, id, v)); }
  CZuError LoadToken(DWORD id, unsigned long long v) override { return Keep(AddToken(&buffer, id, v)); }
  CZuError LoadToken(DWORD id, long long v) override { return Keep(AddToken(&buffer, id, v)); }
  CZuError LoadToken(DWORD id, unsigned int v) override { return Keep(AddToken(&buffer, id, v)); }
  CZuError LoadToken(DWORD id, int v) override { return Keep(AddToken(&buffer, id, v)); }
  CZuError LoadToken(DWORD id, const std::wstring& v) override { return Keep(AddToken(&buffer, id, v)); }
  CZuError LoadToken(DWORD id, const std::string& v) override { return Keep(AddToken(&buffer, id, v)); }
  CZuError LoadToken(DWORD id, const char* p, std::size_t n) override { return Keep(AddToken(&buffer, id, p, n)); }
  CZuError LoadToken(DWORD id, const unsigned char* p, std::size_t n) override {
    return Keep(AddToken(&buffer, id, reinterpret_cast<const char*>(p), n));
  }

 private:
  // A value the parser handed over must always be writable.
  CZuError Keep(const CZuError& result) {
    if (result.IsError()) std::abort();
    return result;
  }
};

void CheckEcho(const CEcho& first) {
  const std::string bytes = first.Bytes();
  CEcho second;
  if (second.Load(bytes.data(), bytes.size()).IsError()) std::abort();
  if (second.Bytes() != bytes) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const char* bytes = reinterpret_cast<const char*>(data);
  CEcho raw;
  const CZuError rawResult = raw.Load(bytes, size);
  CheckEcho(raw);

  const std::string text(bytes, size);
  CEcho fromText;
  const CZuError textResult = fromText.Load(text);
  CheckEcho(fromText);
  auto_ptr_array<char> decoded;
  std::size_t length = 0;
  if (!CAscii85::Decode(text, decoded, length)) {
    CEcho direct;
    const CZuError directResult = direct.Load(decoded.get(), length);
    if (directResult.GetErrorCode() != textResult.GetErrorCode() || direct.Bytes() != fromText.Bytes()) std::abort();
  } else if (!textResult) {
    std::abort();  // text that does not decode cannot load
  }
  (void)rawResult;
  return 0;
}
