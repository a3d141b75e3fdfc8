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
HRESULT FoldWin32Raw(std::uint32_t u) { return Code(u) <= 0 ? Code(u) : Code(0x80070000u | (u & 0xFFFFu)); }
HRESULT FoldWin32(std::uint32_t u) {
  return FoldWin32Raw(u == 0 ? static_cast<std::uint32_t>(ERROR_ERRORS_ENCOUNTERED) : u);
}
HRESULT FoldHResult(std::uint32_t u) { return Code(u); }
HRESULT FoldErrNo(std::uint32_t u) { return Code(0xECCC0000u | u); }
HRESULT FoldHttp(std::uint32_t u) { return Code(0xEC000000u | u); }
HRESULT FoldInt(std::uint32_t u) { return Code(0xEDDD0000u | u); }
HRESULT FoldSQLite(std::uint32_t u) { return Code(0xEDB00000u | u); }
HRESULT FoldTQResult(std::uint32_t u) { return Code(0xEDA00000u | u); }
HRESULT FoldEventMessage(std::uint32_t u) {
  if (u == 0) return 0;
  const std::uint32_t module = (u & (1u << 17)) ? (u >> 18) & 0x3FFu : (u >> 24) & 0x7Fu;
  return Code(0xE8000000u | (module << 16) | (u & 0x7FFFu));
}

// Is<Domain>: the builder's folding, with the two exceptions of the domains.
bool IsWin32Code(const CZuError& r, std::uint32_t u) { return r.Is(FoldWin32Raw(u)); }
bool IsEventMessageCode(const CZuError& r, std::uint32_t u) {
  if (u == 0) return r.GetErrorCode() == 0;
  return FXErrorUtil::IsTypeEventMessage(r) && r.Is(FoldEventMessage(u));
}

// Layout tests for the read-back: `direct` is applied to the code itself,
// `strict` to its equivalents (they differ only for SQLite and TQResult,
// whose direct test accepts any customer code on purpose).
bool IsWin32Layout(std::uint32_t c) { return (c & 0xFFFF0000u) == 0x80070000u; }
bool IsErrNoLayout(std::uint32_t c) { return (c & kCustomer) && (c & kFacility) == 0x0CCC0000u; }
bool IsHttpLayout(std::uint32_t c) { return (c & kCustomer) && (c & kFacility) == 0x0C000000u; }
bool IsIntLayout(std::uint32_t c) { return (c & kCustomer) && (c & kFacility) == 0x0DDD0000u; }
bool IsSQLiteLoose(std::uint32_t c) { return (c & kCustomer) || (c & kFacility) == 0x0DB00000u; }
bool IsSQLiteStrict(std::uint32_t c) { return (c & kCustomer) && (c & kFacility) == 0x0DB00000u; }
bool IsTQLoose(std::uint32_t c) { return (c & kCustomer) || (c & kFacility) == 0x0DA00000u; }
bool IsTQStrict(std::uint32_t c) { return (c & kCustomer) && (c & kFacility) == 0x0DA00000u; }
bool IsEventLayout(std::uint32_t c) { return (c & 0x0C000000u) == 0x08000000u; }
bool NoLayout(std::uint32_t) { return false; }

// What distinguishes one domain from another in FXErrorUtil: how its value
// becomes a result code, how Is<Domain> compares, how Get<Domain> reads back.
struct TDomainRules {
  HRESULT (*fold)(std::uint32_t value);
  bool (*is)(const CZuError& result, std::uint32_t value);  // null: the result Is() the fold
  bool (*direct)(std::uint32_t code);
  bool (*strict)(std::uint32_t code);
  int fallback;
};

constexpr TDomainRules kWin32Rules = {FoldWin32, IsWin32Code, IsWin32Layout, IsWin32Layout,
                                      ERROR_ERRORS_ENCOUNTERED};
constexpr TDomainRules kHResultRules = {FoldHResult, nullptr, NoLayout, NoLayout, 0};
constexpr TDomainRules kErrNoRules = {FoldErrNo, nullptr, IsErrNoLayout, IsErrNoLayout, 65535};
constexpr TDomainRules kHttpRules = {FoldHttp, nullptr, IsHttpLayout, IsHttpLayout, 65535};
constexpr TDomainRules kIntRules = {FoldInt, nullptr, IsIntLayout, IsIntLayout, -1};
constexpr TDomainRules kSQLiteRules = {FoldSQLite, nullptr, IsSQLiteLoose, IsSQLiteStrict, -1};
constexpr TDomainRules kTQResultRules = {FoldTQResult, nullptr, IsTQLoose, IsTQStrict, -1};
constexpr TDomainRules kEventMessageRules = {FoldEventMessage, IsEventMessageCode, IsEventLayout,
                                             IsEventLayout, -1};

template <class Value>
std::uint32_t Raw(Value value) {
  return static_cast<std::uint32_t>(value);
}

bool Is(const TDomainRules& rules, const CZuError& result, std::uint32_t value) {
  return rules.is ? rules.is(result, value) : result.Is(rules.fold(value));
}

int ReadBackValue(const TDomainRules& rules, const CZuError& result) {
  const HRESULT code = result.GetErrorCode();
  if (code >= 0) return 0;
  if (rules.direct(Bits(code))) return static_cast<int>(Bits(code) & 0xFFFFu);
  for (const HRESULT match : FXErrorUtil::GetMatches(code))
    if (rules.strict(Bits(match))) return static_cast<int>(Bits(match) & 0xFFFFu);
  return rules.fallback;
}

}  // namespace

namespace FXErrorUtil {

#define ZU_DEFINE_DOMAIN_FUNCTIONS(Domain, ValueType, PushFormat, ReadBack)                        \
  CZuError Error##Domain(const FXCodeLocation& location, ValueType value) {                         \
    return CZuError(k##Domain##Rules.fold(Raw(value)),                                              \
                    FXErrorDetail::MakeItem<FXErrorItem##Domain>(location, value));                 \
  }                                                                                                 \
  CZuError Error##Domain(const FXCodeLocation& location, ValueType value, const char* format, ...) { \
    va_list args;                                                                                   \
    va_start(args, format);                                                                         \
    boost::shared_ptr<FXErrorItem> item =                                                           \
        FXErrorDetail::MakeDescribedItem<FXErrorItem##Domain, FXErrorItem##Domain##Description>(   \
            location, format, args, value);                                                         \
    va_end(args);                                                                                   \
    return CZuError(k##Domain##Rules.fold(Raw(value)), item);                                       \
  }                                                                                                 \
  CZuError& Push##Domain(CZuError& result, const FXCodeLocation& location, ValueType value) {       \
    return result.Push(FXErrorDetail::MakeItem<FXErrorItem##Domain>(location, value));              \
  }                                                                                                 \
  ZU_IF_##PushFormat(                                                                               \
      CZuError& Push##Domain(CZuError& result, const FXCodeLocation& location, ValueType value,     \
                             const char* format, ...) {                                             \
        va_list args;                                                                               \
        va_start(args, format);                                                                     \
        boost::shared_ptr<FXErrorItem> item =                                                       \
            FXErrorDetail::MakeDescribedItem<FXErrorItem##Domain,                                   \
                                             FXErrorItem##Domain##Description>(location, format,    \
                                                                               args, value);        \
        va_end(args);                                                                               \
        return result.Push(item);                                                                   \
      })                                                                                            \
  bool Is##Domain(const CZuError& result, ValueType value) {                                        \
    return Is(k##Domain##Rules, result, Raw(value));                                                \
  }                                                                                                 \
  ZU_IF_##ReadBack(ValueType Get##Domain(const CZuError& result) {                                  \
    return static_cast<ValueType>(ReadBackValue(k##Domain##Rules, result));                              \
  })

ZU_ERROR_DOMAINS(ZU_DEFINE_DOMAIN_FUNCTIONS)

#undef ZU_DEFINE_DOMAIN_FUNCTIONS

// The module of an event-message code is bits 16 to 25.
int GetEventMessage(const CZuError& r, unsigned long module) {
  // A code that does not fail carries no message: 0. Local number 0 of
  // another module is no message of this one.
  if (r.GetErrorCode() >= 0) return 0;
  const int id = GetEventMessage(r);
  if (id < 0) return -1;
  return ((Bits(r.GetErrorCode()) >> 16) & 0x3FFu) == module ? id : -1;
}

}  // namespace FXErrorUtil
