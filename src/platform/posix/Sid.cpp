#include "platform/Sid.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "errors/ErrorUtil.h"

namespace FXPlatform {

namespace {

constexpr unsigned kMaxSubAuthorities = 15;

struct TSidView {
  std::uint8_t revision;
  std::uint8_t count;
  std::uint8_t authority[6];
};

bool IsValid(const void* sid) {
  const auto* view = static_cast<const TSidView*>(sid);
  return view->revision == 1 && view->count <= kMaxSubAuthorities;
}

std::string Format(const void* sid) {
  const auto* view = static_cast<const TSidView*>(sid);
  std::uint64_t authority = 0;
  for (std::uint8_t byte : view->authority) authority = authority << 8 | byte;
  char text[16 + 12 + 15 * 11 + 1];
  int n = authority >> 32 ? std::snprintf(text, sizeof text, "S-1-0x%012llX", static_cast<unsigned long long>(authority))
                          : std::snprintf(text, sizeof text, "S-1-%llu", static_cast<unsigned long long>(authority));
  const auto* sub = static_cast<const std::uint32_t*>(sid) + 2;
  for (unsigned i = 0; i < view->count; ++i)
    n += std::snprintf(text + n, sizeof text - static_cast<std::size_t>(n), "-%u", static_cast<unsigned>(sub[i]));
  return std::string(text, static_cast<std::size_t>(n));
}

// Reads digits of the base up to `limit`; false when there are none or the
// value exceeds the limit.
bool ReadNumber(const char*& p, const char* end, unsigned base, std::uint64_t limit, std::uint64_t& value) {
  value = 0;
  const char* start = p;
  for (; p != end; ++p) {
    unsigned digit;
    if (*p >= '0' && *p <= '9')
      digit = static_cast<unsigned>(*p - '0');
    else if (base == 16 && *p >= 'A' && *p <= 'F')
      digit = static_cast<unsigned>(*p - 'A' + 10);
    else
      break;
    if (value > (limit - digit) / base) return false;
    value = value * base + digit;
  }
  return p != start;
}

}  // namespace

CZuError SidToString(const void* sid, std::string& text) {
  if (sid == nullptr) return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::SidToString"), ERROR_INVALID_PARAMETER);
  if (!IsValid(sid)) return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::SidToString"), ERROR_INVALID_SID);
  text = Format(sid);
  return CZuError::Success();
}

CZuError StringToSid(const char* text, std::size_t length, CSidRecord& sid) {
  const char* p = text;
  const char* end = text + length;
  CSidRecord record;
  auto* bytes = static_cast<std::uint8_t*>(record.Get());
  auto* sub = static_cast<std::uint32_t*>(record.Get()) + 2;
  bool ok = text != nullptr && length > 4 && std::memcmp(p, "S-1-", 4) == 0;
  if (ok) {
    p += 4;
    std::uint64_t authority = 0;
    const bool hex = end - p > 2 && p[0] == '0' && p[1] == 'x';
    if (hex) p += 2;
    ok = ReadNumber(p, end, hex ? 16 : 10, (std::uint64_t(1) << 48) - 1, authority);
    bytes[0] = 1;
    for (int i = 5; i >= 0; --i, authority >>= 8) bytes[2 + i] = static_cast<std::uint8_t>(authority);
    while (ok && p != end) {
      std::uint64_t value = 0;
      ok = *p++ == '-' && bytes[1] < kMaxSubAuthorities && ReadNumber(p, end, 10, 0xFFFFFFFFu, value);
      if (ok) sub[bytes[1]++] = static_cast<std::uint32_t>(value);
    }
    // Only the canonical spelling: no leading zeros, hex only where needed.
    ok = ok && Format(record.Get()) == std::string(text, length);
  }
  if (!ok) return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::StringToSid"), ERROR_INVALID_SID);
  sid = record;
  return CZuError::Success();
}

}  // namespace FXPlatform
