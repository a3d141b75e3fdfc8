// Shared by the serialization tests: the process-wide logger's lines
// captured in memory, a recorder that accepts every token, raw streams.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "errors/ZuError.h"
#include "serialization/SerializedBuffer.h"

namespace ZuSerialTest {

// Starts the process-wide logger (once) with a hook that keeps its lines
// instead of writing them; Clear forgets what was kept.
void CaptureLog();
void ClearLog();
// Whether a kept line contains `part`; how many do.
bool Logged(const std::string& part);
std::size_t CountLogged(const std::string& part);

// "1.<id>.<type>.<length>." NUL payload, built by hand.
std::string Token(unsigned id, unsigned type, const std::string& payload);
std::string Token(const std::string& header, const std::string& payload);
// The raw bytes of Ascii85 text (test fails if it does not decode).
std::string Decoded(const std::string& text);
std::string Encoded(const std::string& raw);
// The bytes a buffer holds.
std::string Bytes(const CSerializedBuffer& buffer);

// Accepts every token and keeps it as "<type>:<id>:<value>" with the value
// printed canonically (strings as they are, wide strings in UTF-8, bytes in
// hexadecimal, SIDs as their text).
class CRecorder : public CSerializedBase {
 public:
  std::vector<std::string> tokens;

  CZuError LoadToken(DWORD id, void* sid) override;
  CZuError LoadToken(DWORD id, const LUID& value) override;
  CZuError LoadToken(DWORD id, const GUID& value) override;
  CZuError LoadToken(DWORD id, const FILETIME& value) override;
  CZuError LoadToken(DWORD id, bool value) override;
  CZuError LoadToken(DWORD id, unsigned long long value) override;
  CZuError LoadToken(DWORD id, long long value) override;
  CZuError LoadToken(DWORD id, unsigned int value) override;
  CZuError LoadToken(DWORD id, int value) override;
  CZuError LoadToken(DWORD id, const std::wstring& value) override;
  CZuError LoadToken(DWORD id, const std::string& value) override;
  CZuError LoadToken(DWORD id, const char* data, std::size_t size) override;
  CZuError LoadToken(DWORD id, const unsigned char* data, std::size_t size) override;

 private:
  CZuError Keep(const char* type, DWORD id, const std::string& value);
};

// The golden text `name` from tests/serialization/golden, "" when missing.
std::string ReadGolden(const std::string& name);
// With ZU_UPDATE_GOLDEN set, the writer-made golden texts are rewritten.
bool UpdateGolden();
void WriteGolden(const std::string& name, const std::string& text);

}  // namespace ZuSerialTest
