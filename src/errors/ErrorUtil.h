// FXErrorUtil: building results for each error domain, reading domain codes
// back from results, and the equivalence of codes across domains.
//
// Result-code layout (v is the domain value; the OR takes v unmasked, so
// bits of v above 15 leak into the upper half):
//   Win32         0 becomes 774; v <= 0 (signed) stays v; else 0x80070000 | (v & 0xFFFF)
//   HResult       v
//   ErrNo         0xECCC0000 | v     (Microsoft C runtime numbering, see below)
//   Http          0xEC000000 | v
//   Int           0xEDDD0000 | v
//   SQLite        0xEDB00000 | v
//   TQResult      0xEDA00000 | v
//   EventMessage  0 stays 0; else 0xE8000000 | (module << 16) | (v & 0x7FFF)
//
// ErrNo values are the Microsoft C runtime's numbers on every platform
// (ENOENT 2 ... EADDRINUSE 100 ... EWOULDBLOCK 140); the POSIX build
// converts native errno values to them wherever it reports a system failure.
#pragma once

#include <set>

#include "ZuUtilsExport.h"
#include "errors/CodeLocation.h"
#include "errors/ZuError.h"
#include "platform/ZuTypes.h"

#if defined(__GNUC__)
#define ZU_PRINTF_FORMAT(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define ZU_PRINTF_FORMAT(fmt, args)
#endif

namespace FXErrorUtil {

// Error<Domain>(location, value [, format, ...]) builds a failing result with
// one item; Push<Domain> adds such an item to an existing result without
// changing its code. A null or empty format gives the plain item.
#define ZU_DECLARE_DOMAIN_BUILDERS(Domain, ValueType)                                            \
  ZUUTILS_API CZuError Error##Domain(const FXCodeLocation& location, ValueType value);            \
  ZUUTILS_API CZuError Error##Domain(const FXCodeLocation& location, ValueType value,             \
                                     const char* format, ...) ZU_PRINTF_FORMAT(3, 4);             \
  ZUUTILS_API CZuError& Push##Domain(CZuError& result, const FXCodeLocation& location,            \
                                     ValueType value);                                            \
  ZUUTILS_API bool Is##Domain(const CZuError& result, ValueType value);                           \
  inline bool IsNot##Domain(const CZuError& result, ValueType value) {                            \
    return !Is##Domain(result, value);                                                            \
  }

#define ZU_DECLARE_DOMAIN_PUSH_FORMAT(Domain, ValueType)                                         \
  ZUUTILS_API CZuError& Push##Domain(CZuError& result, const FXCodeLocation& location,            \
                                     ValueType value, const char* format, ...)                    \
      ZU_PRINTF_FORMAT(4, 5);

ZU_DECLARE_DOMAIN_BUILDERS(Win32, DWORD)
ZU_DECLARE_DOMAIN_BUILDERS(HResult, HRESULT)
ZU_DECLARE_DOMAIN_BUILDERS(ErrNo, int)
ZU_DECLARE_DOMAIN_BUILDERS(Http, int)
ZU_DECLARE_DOMAIN_BUILDERS(Int, int)
ZU_DECLARE_DOMAIN_BUILDERS(SQLite, int)
ZU_DECLARE_DOMAIN_BUILDERS(TQResult, int)
ZU_DECLARE_DOMAIN_BUILDERS(EventMessage, int)

// Http alone has no Push with a description.
ZU_DECLARE_DOMAIN_PUSH_FORMAT(Win32, DWORD)
ZU_DECLARE_DOMAIN_PUSH_FORMAT(HResult, HRESULT)
ZU_DECLARE_DOMAIN_PUSH_FORMAT(ErrNo, int)
ZU_DECLARE_DOMAIN_PUSH_FORMAT(Int, int)
ZU_DECLARE_DOMAIN_PUSH_FORMAT(SQLite, int)
ZU_DECLARE_DOMAIN_PUSH_FORMAT(TQResult, int)
ZU_DECLARE_DOMAIN_PUSH_FORMAT(EventMessage, int)

#undef ZU_DECLARE_DOMAIN_BUILDERS
#undef ZU_DECLARE_DOMAIN_PUSH_FORMAT

// Read-back of a domain value: 0 for a code that does not fail; the code's
// own low 16 bits when its layout fits the domain; else the low 16 bits of
// the smallest equivalent code that fits; else the domain's fallback
// (Win32 774, ErrNo and Http 65535, the others -1).
ZUUTILS_API DWORD GetWin32(const CZuError& result);
ZUUTILS_API int GetErrNo(const CZuError& result);
ZUUTILS_API int GetHttp(const CZuError& result);
ZUUTILS_API int GetInt(const CZuError& result);
ZUUTILS_API int GetSQLite(const CZuError& result);
ZUUTILS_API int GetTQResult(const CZuError& result);
ZUUTILS_API int GetEventMessage(const CZuError& result);
// The event-message id only when it belongs to the given module, else -1.
ZUUTILS_API int GetEventMessage(const CZuError& result, unsigned long module);

inline bool IsTypeWin32(HRESULT code) { return (code & 0x0FFF0000) == 0x00070000; }
inline bool IsTypeErrNo(HRESULT code) {
  return (code & 0x20000000) != 0 && (code & 0x0FFF0000) == 0x0CCC0000;
}
inline bool IsTypeEventMessage(HRESULT code) { return (code & 0x0C000000) == 0x08000000; }
inline bool IsTypeWin32(const CZuError& r) { return IsTypeWin32(r.GetErrorCode()); }
inline bool IsTypeErrNo(const CZuError& r) { return IsTypeErrNo(r.GetErrorCode()); }
inline bool IsTypeEventMessage(const CZuError& r) { return IsTypeEventMessage(r.GetErrorCode()); }

// Equal codes, or codes listed together in one group of the equivalence
// table. Not transitive: Win32 2 and 3 both match ErrNo 2 but not each other.
ZUUTILS_API bool Matches(HRESULT a, HRESULT b);
// The codes equivalent to `code` in ascending order (itself only when a
// group lists it with itself); empty until the table is compiled.
ZUUTILS_API std::set<HRESULT> GetMatches(HRESULT code);
// Builds the lookup containers once per process; safe to race.
ZUUTILS_API void CompileErrorMappingsIntoContainer();

}  // namespace FXErrorUtil
