// Security identifiers and their standard text form, "S-1-5-32-544".
//
// A SID is handled through PSID, an untyped pointer to the binary record as
// Windows lays it out: revision (1), count of sub-authorities (0 to 15), the
// 48-bit identifier authority (big-endian) and the sub-authorities (32-bit,
// native order). Windows converts with ConvertSidToStringSidW and
// ConvertStringSidToSidW; other platforms have no SIDs, so this library
// carries a minimal record of the same layout and converts it itself.
//
// Text: "S-1-" then the authority in decimal, or as "0x" and twelve
// upper-case hexadecimal digits when it does not fit 32 bits, then "-" and
// each sub-authority in decimal. Parsing accepts exactly that canonical text
// on both platforms: the aliases Windows knows ("BA", "SY"), lower case,
// leading zeros or other spellings fail, so that a text means the same SID
// wherever it is read and writes back byte for byte.
#pragma once

#include <cstddef>
#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/ZuTypes.h"

// As <winnt.h> declares it.
typedef void* PSID;

#ifndef ERROR_INVALID_SID
#define ERROR_INVALID_SID 1337L
#endif

namespace FXPlatform {

// The largest SID record: 8 bytes of header and 15 sub-authorities.
constexpr std::size_t kMaxSidBytes = 8 + 15 * 4;

// A SID record in storage of its own, aligned for the sub-authorities.
class CSidRecord {
 public:
  PSID Get() { return m_words; }
  const void* Get() const { return m_words; }
  // Bytes in use: 8 + 4 * sub-authorities.
  std::size_t Size() const { return 8 + 4 * static_cast<std::size_t>(reinterpret_cast<const unsigned char*>(m_words)[1]); }

 private:
  DWORD m_words[kMaxSidBytes / 4] = {};
};

// The canonical text of `sid`. A null pointer gives Win32 87, a record that
// is not a valid SID (revision other than 1, more than 15 sub-authorities)
// 1337 (ERROR_INVALID_SID); `text` is left unchanged on failure.
ZUUTILS_API CZuError SidToString(const void* sid, std::string& text);

// Parses the canonical text into `sid`; any other text fails with 1337 and
// leaves `sid` unchanged.
ZUUTILS_API CZuError StringToSid(const char* text, std::size_t length, CSidRecord& sid);

}  // namespace FXPlatform
