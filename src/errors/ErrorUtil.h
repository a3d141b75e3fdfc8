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

// For every domain of ZU_ERROR_DOMAINS (errors/ErrorItem.h):
//   Error<Domain>(location, value [, format, ...]) builds a failing result
//     with one item of the domain; a null or empty format gives the plain
//     item, an expansion that overflows keeps its text behind
//     "[BUFFEROVERFLOW] ". The Win32 builder folds 0 into 774 but keeps 0 in
//     the item.
//   Push<Domain>(result, location, value [, format, ...]) adds such an item
//     without changing the code (Http has no form with a format).
//   Is<Domain>/IsNot<Domain>(result, value): CZuError::Is with the value
//     folded as by the builder, except that a Win32 0 stays 0 and an
//     EventMessage value only matches a code of the event-message type
//     (value 0 matches the code 0).
//   Get<Domain>(result) (not HResult): 0 for a code that does not fail; the
//     code's own low 16 bits when its layout fits the domain; else the low
//     16 bits of the smallest equivalent code that fits; else the domain's
//     fallback (Win32 774, ErrNo and Http 65535, the others -1).
#define ZU_IF_ZU_PUSH_FORMAT(...) __VA_ARGS__
#define ZU_IF_ZU_NO_PUSH_FORMAT(...)
#define ZU_IF_ZU_READ_BACK(...) __VA_ARGS__
#define ZU_IF_ZU_NO_READ_BACK(...)

#define ZU_DECLARE_DOMAIN_FUNCTIONS(Domain, ValueType, PushFormat, ReadBack)                     \
  ZUUTILS_API CZuError Error##Domain(const FXCodeLocation& location, ValueType value);            \
  ZUUTILS_API CZuError Error##Domain(const FXCodeLocation& location, ValueType value,             \
                                     const char* format, ...) ZU_PRINTF_FORMAT(3, 4);             \
  ZUUTILS_API CZuError& Push##Domain(CZuError& result, const FXCodeLocation& location,            \
                                     ValueType value);                                            \
  ZU_IF_##PushFormat(ZUUTILS_API CZuError& Push##Domain(CZuError& result,                         \
                                                        const FXCodeLocation& location,           \
                                                        ValueType value, const char* format, ...) \
                         ZU_PRINTF_FORMAT(4, 5);)                                                 \
  ZUUTILS_API bool Is##Domain(const CZuError& result, ValueType value);                           \
  inline bool IsNot##Domain(const CZuError& result, ValueType value) {                            \
    return !Is##Domain(result, value);                                                            \
  }                                                                                               \
  ZU_IF_##ReadBack(ZUUTILS_API ValueType Get##Domain(const CZuError& result);)

ZU_ERROR_DOMAINS(ZU_DECLARE_DOMAIN_FUNCTIONS)

#undef ZU_DECLARE_DOMAIN_FUNCTIONS

// The event-message id only when it belongs to the given module, else -1.
ZUUTILS_API int GetEventMessage(const CZuError& result, unsigned long module);

// The texts of EventMessage items come from the product's message library,
// MsgTextLib_C, loaded at run time: "MsgTextLib_C.dll" found by the usual
// DLL search on Windows, "libMsgTextLib_C.so" found as dlopen searches
// (LD_LIBRARY_PATH, the runpath, the system folders) elsewhere. It exports
//   extern "C" const char* EvGetTextRaw(DWORD id);
// returning the raw text of a message id (with "%1"-style insertion marks)
// or null; the text must stay valid while the library is loaded.
// Insertion marks "%1" to "%99" (a printf-style "!...!" after the number is
// skipped: the parameter's own type decides) are filled from the item's
// parameters: int, unsigned, long, unsigned long, long long and unsigned
// long long as numbers, std::string and const char* as they are,
// std::wstring in UTF-8; a mark without its parameter becomes
// "--Missing-Argument-N--", a parameter of another type
// "--Unsupported-Argument-N--";
// "%%" is a percent sign. The full text keeps the message's line breaks,
// the user formats show it in one line. Lookups may run on any thread.
//
// Switches the lookup on and loads the library if it is not loaded yet. A
// library that cannot be loaded gives the loader's error, one without the
// export ERROR_PROC_NOT_FOUND; either way nothing stays loaded and the items
// show "(Localized string unavailable)".
ZUUTILS_API CZuError EnableEventMessageLookup();
// Switches the lookup off and unloads the library; a lookup that is running
// keeps it until it is done. Unloading when nothing is loaded is fine.
ZUUTILS_API CZuError UnloadAndDisableEventMessageLookup();

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
