#include "errors/ErrorUtil.h"

#include <cstdarg>
#include <cstdint>

#include "errors/ErrorItemFactory.h"

namespace {

constexpr std::uint32_t kCustomer = 0x20000000u;
constexpr std::uint32_t kFacility = 0x0FFF0000u;

HRESULT Code(std::uint32_t bits) { return static_cast<HRESULT>(bits); }
std::uint32_t Bits(HRESULT code) { return static_cast<std::uint32_t>(code); }

// Folding of domain values into result codes. The OR takes the value
// unmasked: bits above 15 leak into the upper half, as they always have.
HRESULT FoldWin32Raw(DWORD v) {
  const std::uint32_t u = static_cast<std::uint32_t>(v);
  return Code(u) <= 0 ? Code(u) : Code(0x80070000u | (u & 0xFFFFu));
}
HRESULT FoldWin32(DWORD v) { return FoldWin32Raw(v == 0 ? ERROR_ERRORS_ENCOUNTERED : v); }
HRESULT FoldHResult(HRESULT v) { return v; }
HRESULT FoldErrNo(int v) { return Code(0xECCC0000u | Bits(v)); }
HRESULT FoldHttp(int v) { return Code(0xEC000000u | Bits(v)); }
HRESULT FoldInt(int v) { return Code(0xEDDD0000u | Bits(v)); }
HRESULT FoldSQLite(int v) { return Code(0xEDB00000u | Bits(v)); }
HRESULT FoldTQResult(int v) { return Code(0xEDA00000u | Bits(v)); }
HRESULT FoldEventMessage(int v) {
  if (v == 0) return 0;
  const std::uint32_t u = Bits(v);
  const std::uint32_t module = (u & (1u << 17)) ? (u >> 18) & 0x3FFu : (u >> 24) & 0x7Fu;
  return Code(0xE8000000u | (module << 16) | (u & 0x7FFFu));
}

// Layout tests for the read-back: `direct` is applied to the code itself,
// `strict` to its equivalents (they differ only for SQLite and TQResult,
// whose direct test accepts any customer code on purpose).
struct TReadBack {
  bool (*direct)(std::uint32_t);
  bool (*strict)(std::uint32_t);
  int fallback;
};

bool IsWin32Layout(std::uint32_t c) { return (c & 0xFFFF0000u) == 0x80070000u; }
bool IsErrNoLayout(std::uint32_t c) { return (c & kCustomer) && (c & kFacility) == 0x0CCC0000u; }
bool IsHttpLayout(std::uint32_t c) { return (c & kCustomer) && (c & kFacility) == 0x0C000000u; }
bool IsIntLayout(std::uint32_t c) { return (c & kCustomer) && (c & kFacility) == 0x0DDD0000u; }
bool IsSQLiteLoose(std::uint32_t c) { return (c & kCustomer) || (c & kFacility) == 0x0DB00000u; }
bool IsSQLiteStrict(std::uint32_t c) { return (c & kCustomer) && (c & kFacility) == 0x0DB00000u; }
bool IsTQLoose(std::uint32_t c) { return (c & kCustomer) || (c & kFacility) == 0x0DA00000u; }
bool IsTQStrict(std::uint32_t c) { return (c & kCustomer) && (c & kFacility) == 0x0DA00000u; }
bool IsEventLayout(std::uint32_t c) { return (c & 0x0C000000u) == 0x08000000u; }

int ReadBack(const CZuError& result, const TReadBack& rule) {
  const HRESULT code = result.GetErrorCode();
  if (code >= 0) return 0;
  if (rule.direct(Bits(code))) return static_cast<int>(Bits(code) & 0xFFFFu);
  for (const HRESULT match : FXErrorUtil::GetMatches(code))
    if (rule.strict(Bits(match))) return static_cast<int>(Bits(match) & 0xFFFFu);
  return rule.fallback;
}

}  // namespace

namespace FXErrorUtil {

// Every domain's builders, from its fold function and item classes.
#define ZU_DEFINE_DOMAIN_BUILDERS(Domain, ValueType, Fold)                                       \
  CZuError Error##Domain(const FXCodeLocation& location, ValueType value) {                       \
    return CZuError(Fold(value), FXErrorDetail::MakeItem<FXErrorItem##Domain>(location, value)); \
  }                                                                                               \
  CZuError Error##Domain(const FXCodeLocation& location, ValueType value, const char* format,    \
                         ...) {                                                                   \
    va_list args;                                                                                 \
    va_start(args, format);                                                                       \
    boost::shared_ptr<FXErrorItem> item =                                                         \
        FXErrorDetail::MakeDescribedItem<FXErrorItem##Domain, FXErrorItem##Domain##Description>( \
            location, format, args, value);                                                       \
    va_end(args);                                                                                 \
    return CZuError(Fold(value), item);                                                           \
  }                                                                                               \
  CZuError& Push##Domain(CZuError& result, const FXCodeLocation& location, ValueType value) {     \
    return result.Push(FXErrorDetail::MakeItem<FXErrorItem##Domain>(location, value));            \
  }

#define ZU_DEFINE_DOMAIN_PUSH_FORMAT(Domain, ValueType)                                          \
  CZuError& Push##Domain(CZuError& result, const FXCodeLocation& location, ValueType value,       \
                         const char* format, ...) {                                               \
    va_list args;                                                                                 \
    va_start(args, format);                                                                       \
    boost::shared_ptr<FXErrorItem> item =                                                         \
        FXErrorDetail::MakeDescribedItem<FXErrorItem##Domain, FXErrorItem##Domain##Description>( \
            location, format, args, value);                                                       \
    va_end(args);                                                                                 \
    return result.Push(item);                                                                     \
  }

ZU_DEFINE_DOMAIN_BUILDERS(Win32, DWORD, FoldWin32)
ZU_DEFINE_DOMAIN_BUILDERS(HResult, HRESULT, FoldHResult)
ZU_DEFINE_DOMAIN_BUILDERS(ErrNo, int, FoldErrNo)
ZU_DEFINE_DOMAIN_BUILDERS(Http, int, FoldHttp)
ZU_DEFINE_DOMAIN_BUILDERS(Int, int, FoldInt)
ZU_DEFINE_DOMAIN_BUILDERS(SQLite, int, FoldSQLite)
ZU_DEFINE_DOMAIN_BUILDERS(TQResult, int, FoldTQResult)
ZU_DEFINE_DOMAIN_BUILDERS(EventMessage, int, FoldEventMessage)

ZU_DEFINE_DOMAIN_PUSH_FORMAT(Win32, DWORD)
ZU_DEFINE_DOMAIN_PUSH_FORMAT(HResult, HRESULT)
ZU_DEFINE_DOMAIN_PUSH_FORMAT(ErrNo, int)
ZU_DEFINE_DOMAIN_PUSH_FORMAT(Int, int)
ZU_DEFINE_DOMAIN_PUSH_FORMAT(SQLite, int)
ZU_DEFINE_DOMAIN_PUSH_FORMAT(TQResult, int)
ZU_DEFINE_DOMAIN_PUSH_FORMAT(EventMessage, int)

// A zero Win32 value is compared as it is, not as 774.
bool IsWin32(const CZuError& r, DWORD value) { return r.Is(FoldWin32Raw(value)); }
bool IsHResult(const CZuError& r, HRESULT value) { return r.Is(FoldHResult(value)); }
bool IsErrNo(const CZuError& r, int value) { return r.Is(FoldErrNo(value)); }
bool IsHttp(const CZuError& r, int value) { return r.Is(FoldHttp(value)); }
bool IsInt(const CZuError& r, int value) { return r.Is(FoldInt(value)); }
bool IsSQLite(const CZuError& r, int value) { return r.Is(FoldSQLite(value)); }
bool IsTQResult(const CZuError& r, int value) { return r.Is(FoldTQResult(value)); }
bool IsEventMessage(const CZuError& r, int value) {
  if (value == 0) return r.GetErrorCode() == 0;
  return IsTypeEventMessage(r) && r.Is(FoldEventMessage(value));
}

DWORD GetWin32(const CZuError& r) {
  return static_cast<DWORD>(ReadBack(r, {IsWin32Layout, IsWin32Layout, ERROR_ERRORS_ENCOUNTERED}));
}
int GetErrNo(const CZuError& r) { return ReadBack(r, {IsErrNoLayout, IsErrNoLayout, 65535}); }
int GetHttp(const CZuError& r) { return ReadBack(r, {IsHttpLayout, IsHttpLayout, 65535}); }
int GetInt(const CZuError& r) { return ReadBack(r, {IsIntLayout, IsIntLayout, -1}); }
int GetSQLite(const CZuError& r) { return ReadBack(r, {IsSQLiteLoose, IsSQLiteStrict, -1}); }
int GetTQResult(const CZuError& r) { return ReadBack(r, {IsTQLoose, IsTQStrict, -1}); }
// The local number of the message; its module is bits 16 to 25 of the code.
int GetEventMessage(const CZuError& r) { return ReadBack(r, {IsEventLayout, IsEventLayout, -1}); }
int GetEventMessage(const CZuError& r, unsigned long module) {
  const int id = GetEventMessage(r);
  if (id <= 0) return id == 0 ? 0 : -1;
  return ((Bits(r.GetErrorCode()) >> 16) & 0x3FFu) == module ? id : -1;
}

}  // namespace FXErrorUtil
