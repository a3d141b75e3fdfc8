// zuerror: what a result code means. Given a code in hexadecimal or decimal,
// or a domain and its value, prints the domain, the values the code reads
// back as, the codes the library treats as equivalent, and the texts of the
// failure as a log (full) and a user (both single-line formats) see them.
// Event-message texts appear when the message library can be loaded.
//
//   zuerror 0x80070005
//   zuerror --win32 5 | --errno 2 | --http 404 | --int 7 | --sqlite 266 | --tq 3 | --hresult 0x80004005
#include <cerrno>
#include <cstdio>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "ZuUtils.h"

namespace {

const FXCodeLocation kHere(__FILE__, "zuerror", __LINE__);

bool ParseNumber(const char* text, long long& value) {
  if (text == nullptr || *text == '\0') return false;
  errno = 0;
  char* end = nullptr;
  value = std::strtoll(text, &end, 0);
  return errno == 0 && *end == '\0' && value >= -0x80000000LL && value <= 0xFFFFFFFFLL;
}

const char* DomainOf(HRESULT code) {
  if (code >= 0) return "success";
  if (FXErrorUtil::IsTypeWin32(code)) return "Win32";
  if (FXErrorUtil::IsTypeErrNo(code)) return "ErrNo";
  if (FXErrorUtil::IsTypeEventMessage(code)) return "EventMessage";
  const unsigned facility = (static_cast<unsigned>(code) >> 16) & 0x0FFF;
  if (code & 0x20000000) {
    switch (facility) {
      case 0xC00: return "Http";
      case 0xDDD: return "Int";
      case 0xDB0: return "SQLite";
      case 0xDA0: return "TQResult";
      default: break;
    }
  }
  return "HResult";
}

// Builds the result the way library code would for `--domain value`.
bool FromDomain(const std::string& option, long long v, CZuError& result) {
  const int i = static_cast<int>(v);
  if (option == "--win32") result = FXErrorUtil::ErrorWin32(kHere, static_cast<DWORD>(v));
  else if (option == "--hresult") result = FXErrorUtil::ErrorHResult(kHere, static_cast<HRESULT>(v));
  else if (option == "--errno") result = FXErrorUtil::ErrorErrNo(kHere, i);
  else if (option == "--http") result = FXErrorUtil::ErrorHttp(kHere, i);
  else if (option == "--int") result = FXErrorUtil::ErrorInt(kHere, i);
  else if (option == "--sqlite") result = FXErrorUtil::ErrorSQLite(kHere, i);
  else if (option == "--tq") result = FXErrorUtil::ErrorTQResult(kHere, i);
  else if (option == "--event") result = FXErrorUtil::ErrorEventMessage(kHere, i);
  else return false;
  return true;
}

// A bare code gets the item its domain's builder would have made, so that
// its texts show the domain's words.
CZuError FromCode(HRESULT code) {
  const std::uint32_t bits = static_cast<std::uint32_t>(code);
  const int low = static_cast<int>(bits & 0xFFFFu);
  const std::string domain = DomainOf(code);
  if (domain == "Win32") return FXErrorUtil::ErrorWin32(kHere, static_cast<DWORD>(low));
  if (domain == "ErrNo") return FXErrorUtil::ErrorErrNo(kHere, low);
  if (domain == "Http") return FXErrorUtil::ErrorHttp(kHere, low);
  if (domain == "Int") return FXErrorUtil::ErrorInt(kHere, low);
  if (domain == "SQLite") return FXErrorUtil::ErrorSQLite(kHere, low);
  if (domain == "TQResult") return FXErrorUtil::ErrorTQResult(kHere, low);
  if (domain == "EventMessage") {
    // Module in bits 16 to 25: the id form with bit 17 set carries it whole.
    const std::uint32_t module = (bits >> 16) & 0x3FFu;
    return FXErrorUtil::ErrorEventMessage(kHere, static_cast<int>((module << 18) | (1u << 17) | (bits & 0x7FFFu)));
  }
  if (code == 0) return CZuError::Success();
  return FXErrorUtil::ErrorHResult(kHere, code);
}

int Usage() {
  std::fprintf(stderr,
               "usage: zuerror CODE\n"
               "       zuerror --win32|--hresult|--errno|--http|--int|--sqlite|--tq|--event VALUE\n"
               "CODE and VALUE are decimal or 0x-prefixed hexadecimal.\n");
  return 2;
}

void Explain(const CZuError& result) {
  const HRESULT code = result.GetErrorCode();
  std::printf("code     0x%08X (%d)\n", static_cast<unsigned>(code), static_cast<int>(code));
  std::printf("domain   %s\n", DomainOf(code));
  if (code < 0) {
    std::printf("reads as Win32 %lu, ErrNo %d, Http %d, Int %d, SQLite %d, TQResult %d, EventMessage %d\n",
                static_cast<unsigned long>(FXErrorUtil::GetWin32(result)), FXErrorUtil::GetErrNo(result),
                FXErrorUtil::GetHttp(result), FXErrorUtil::GetInt(result), FXErrorUtil::GetSQLite(result),
                FXErrorUtil::GetTQResult(result), FXErrorUtil::GetEventMessage(result));
  }
  std::printf("matches ");
  const std::set<HRESULT> matches = FXErrorUtil::GetMatches(code);
  if (matches.empty()) std::printf(" (none)");
  for (HRESULT m : matches) std::printf(" 0x%08X", static_cast<unsigned>(m));
  std::printf("\n");
  std::printf("full     %s\n", result.AsString().c_str());
  std::printf("user     %s\n", result.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE).c_str());
  std::printf("user+    %s\n", result.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE).c_str());
}

}  // namespace

int main(int argc, char** argv) {
  FXErrorUtil::CompileErrorMappingsIntoContainer();
  // Without the message library event messages show as unavailable.
  FXErrorUtil::EnableEventMessageLookup();
  long long value = 0;
  CZuError result = CZuError::Success();
  if (argc == 2 && ParseNumber(argv[1], value)) {
    result = FromCode(static_cast<HRESULT>(static_cast<unsigned long long>(value)));
  } else if (argc == 3 && ParseNumber(argv[2], value) && FromDomain(argv[1], value, result)) {
  } else {
    return Usage();
  }
  Explain(result);
  return 0;
}
