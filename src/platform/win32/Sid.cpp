#include "platform/Sid.h"

#include <windows.h>
#include <sddl.h>

#include <cstring>
#include <memory>

#include "errors/ErrorUtil.h"
#include "platform/win32/WinString.h"

namespace FXPlatform {

namespace {

// Frees what the SDDL conversions allocate.
struct TLocalFree {
  void operator()(void* p) const { ::LocalFree(p); }
};

// The system's text of a valid SID, or false.
bool SystemText(PSID sid, std::string& text) {
  wchar_t* wide = nullptr;
  if (!::ConvertSidToStringSidW(sid, &wide)) return false;
  std::unique_ptr<wchar_t, TLocalFree> owner(wide);
  text = Narrow(wide);
  return true;
}

}  // namespace

CZuError SidToString(const void* sid, std::string& text) {
  if (sid == nullptr) return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::SidToString"), ERROR_INVALID_PARAMETER);
  PSID system = const_cast<void*>(sid);
  std::string converted;
  if (!::IsValidSid(system) || !SystemText(system, converted))
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::SidToString"), ERROR_INVALID_SID);
  text = std::move(converted);
  return CZuError::Success();
}

CZuError StringToSid(const char* text, std::size_t length, CSidRecord& sid) {
  // The prefix check keeps the system's aliases ("BA", "SY") out; the round
  // trip below keeps every other spelling out.
  PSID parsed = nullptr;
  const std::string input = text != nullptr ? std::string(text, length) : std::string();
  const bool converted = length > 4 && std::memcmp(text, "S-1-", 4) == 0 &&
                         input.find('\0') == std::string::npos &&
                         ::ConvertStringSidToSidW(Widen(input).c_str(), &parsed);
  std::unique_ptr<void, TLocalFree> owner(converted ? parsed : nullptr);
  std::string canonical;
  if (!converted || ::GetLengthSid(parsed) > kMaxSidBytes || !SystemText(parsed, canonical) || canonical != input)
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::StringToSid"), ERROR_INVALID_SID);
  std::memcpy(sid.Get(), parsed, ::GetLengthSid(parsed));
  return CZuError::Success();
}

}  // namespace FXPlatform
