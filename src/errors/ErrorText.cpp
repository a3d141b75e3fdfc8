#include "errors/ErrorText.h"

#include "text/StringAlgo.h"
#include "text/StringFormat.h"

namespace {

using FXString::Format;

std::uint32_t U32(std::int64_t v) { return static_cast<std::uint32_t>(v); }
int I32(std::int64_t v) { return static_cast<int>(U32(v)); }

// The module and local number packed into an event-message id.
unsigned EventModule(std::uint32_t id) {
  return (id & (1u << 17)) ? (id >> 18) & 0x3FF : (id >> 24) & 0x7F;
}
unsigned EventLocal(std::uint32_t id) { return id & 0x7FFF; }

// The tag that closes a one-line text, as " (W32.5)"; empty for the domains
// whose one line has none.
std::string UserTag(EErrorDomain domain, std::int64_t v) {
  switch (domain) {
    case EErrorDomain::Win32: return Format(" (W32.%lu)", static_cast<unsigned long>(U32(v)));
    case EErrorDomain::HResult: return Format(" (HR.0x%X)", U32(v));
    case EErrorDomain::ErrNo: return Format(" (ErrNo.%d)", I32(v));
    case EErrorDomain::Http: return Format(" (http.%d)", I32(v));
    case EErrorDomain::Int: return Format(" (Int.%d.0x%X)", I32(v), U32(v));
    case EErrorDomain::SQLite: return Format(" (SQL.0x%lX)", static_cast<unsigned long>(U32(v)));
    case EErrorDomain::TQResult: return Format(" (TQ.0x%X)", U32(v));
    case EErrorDomain::EventMessage: return std::string();
  }
  return std::string();
}

bool IsNumberOnly(EErrorDomain domain) {
  return domain == EErrorDomain::Int || domain == EErrorDomain::TQResult;
}

}  // namespace

namespace FXErrorText {

std::string FullText(EErrorDomain domain, const FXErrorItem& item, std::int64_t v) {
  std::string text = item.GetLocation().AsString();
  switch (domain) {
    case EErrorDomain::Win32:
      return text + Format("/W32.%lu.(", static_cast<unsigned long>(U32(v))) +
             CodeText(domain, item, v, false) + ")";
    case EErrorDomain::HResult:
      return text + Format("/HR.0x%X-(", U32(v)) + CodeText(domain, item, v, false) + ")";
    case EErrorDomain::ErrNo:
    case EErrorDomain::Http: {
      const char* tag = domain == EErrorDomain::ErrNo ? "ErrNo" : "http";
      const std::string t = CodeText(domain, item, v, false);
      if (t.empty()) return text + Format("/%s.%d", tag, I32(v));
      return text + Format("/%s.%d.(", tag, I32(v)) + t + ")";
    }
    case EErrorDomain::Int:
      return text + Format("/Int.%d.0x%X", I32(v), U32(v));
    case EErrorDomain::SQLite:
      return text + Format("/SQL.0x%lX.(", static_cast<unsigned long>(U32(v))) +
             CodeText(domain, item, v, false) + ")";
    case EErrorDomain::TQResult:
      return text + Format("/TQ.0x%X", U32(v));
    case EErrorDomain::EventMessage: {
      const std::uint32_t id = U32(v);
      text += Format("/EventMessage.0x%08X.%u:%u.", id, EventModule(id), EventLocal(id));
      const std::string t = CodeText(domain, item, v, false);
      if (t.empty()) return text + " (Localized string unavailable)";
      return text + "(" + t + ")";
    }
  }
  return text;
}

std::string UserText(EErrorDomain domain, const FXErrorItem& item, std::int64_t v,
                     const std::string* description) {
  if (IsNumberOnly(domain)) {
    // No code text: "Error" stands where the description is missing.
    const bool withDescription = description != nullptr;
    return (withDescription ? *description : std::string("Error")) + UserTag(domain, v);
  }
  std::string text = CodeText(domain, item, v, true);
  if (description != nullptr) {
    if (!text.empty() && !description->empty()) text += ", ";
    text += *description;
  }
  text += UserTag(domain, v);
  FXString::Trim(text, " \t");
  return text;
}

bool HasPlainUserText(EErrorDomain domain, EErrorOutputFormat format) {
  if (format == EErrorOutputFormat::USER_SINGLE_LINE_CODE) return true;
  return format == EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE && !IsNumberOnly(domain);
}

}  // namespace FXErrorText
