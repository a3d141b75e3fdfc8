// The event-message library: loaded on request, shared by reference count,
// asked for the raw text of a message id.
#include <cctype>
#include <cstring>
#include <mutex>

#include <boost/make_shared.hpp>

#include "errors/ErrorText.h"
#include "errors/ErrorUtil.h"
#include "platform/DynamicLibrary.h"
#include "text/StringConvert.h"
#include "text/StringFormat.h"

namespace {

typedef const char* (*EvGetTextRawFunction)(DWORD id);

struct TMessageLibrary {
  FXPlatform::CDynamicLibrary library;
  EvGetTextRawFunction getText = nullptr;
};

// A lookup holds its own reference to the library, so an unload that races
// with it only drops the process's reference and the last one out unloads.
struct TLookupState {
  std::mutex lock;
  bool enabled = false;
  boost::shared_ptr<TMessageLibrary> library;
};

TLookupState& State() {
  static TLookupState state;
  return state;
}

boost::shared_ptr<TMessageLibrary> CurrentLibrary() {
  TLookupState& state = State();
  std::lock_guard<std::mutex> guard(state.lock);
  return state.enabled ? state.library : boost::shared_ptr<TMessageLibrary>();
}

template <class T>
bool FormatAs(const boost::any& value, const char* format, std::string& text) {
  const T* v = boost::any_cast<T>(&value);
  if (v != nullptr) text += FXString::Format(format, *v);
  return v != nullptr;
}

// One parameter as text, by its type; wide strings in UTF-8. Other types
// are named as unsupported rather than guessed at.
void AppendArgument(const boost::any& value, unsigned long long number, std::string& text) {
  if (const std::string* s = boost::any_cast<std::string>(&value)) {
    text += *s;
    return;
  }
  if (const char* const* s = boost::any_cast<const char*>(&value)) {
    text += *s ? *s : "";
    return;
  }
  if (const std::wstring* s = boost::any_cast<std::wstring>(&value)) {
    text += FXString::ToString(*s);
    return;
  }
  if (FormatAs<int>(value, "%d", text) || FormatAs<unsigned>(value, "%u", text) ||
      FormatAs<long>(value, "%ld", text) || FormatAs<unsigned long>(value, "%lu", text) ||
      FormatAs<long long>(value, "%lld", text) || FormatAs<unsigned long long>(value, "%llu", text))
    return;
  text += FXString::Format("--Unsupported-Argument-%llu--", number);
}

// Insertion marks are "%1" to "%99", optionally followed by a printf-style
// "!...!" part as message compilers write it (the parameter's own type
// decides the format); "%%" is a percent sign; anything else stays as it is.
std::string FillInsertions(const char* raw, const FXErrorItem::Parameters& parameters) {
  std::string text;
  const char* p = raw;
  while (*p != '\0') {
    if (p[0] != '%' || (p[1] != '%' && (p[1] < '1' || p[1] > '9'))) {
      text += *p++;
      continue;
    }
    if (p[1] == '%') {
      text += '%';
      p += 2;
      continue;
    }
    unsigned long long number = static_cast<unsigned long long>(p[1] - '0');
    p += 2;
    if (std::isdigit(static_cast<unsigned char>(*p))) number = number * 10 + static_cast<unsigned>(*p++ - '0');
    if (*p == '!') {
      const char* close = std::strchr(p + 1, '!');
      if (close != nullptr) p = close + 1;
    }
    if (number <= parameters.size())
      AppendArgument(parameters[number - 1], number, text);
    else
      text += FXString::Format("--Missing-Argument-%llu--", number);
  }
  return text;
}

}  // namespace

namespace FXErrorText {

CZuError EventMessageText(DWORD id, const FXErrorItem::Parameters& parameters, bool singleLine,
                          std::string& text) {
  text.clear();
  const boost::shared_ptr<TMessageLibrary> library = CurrentLibrary();
  if (!library)
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXErrorText::EventMessageText"), ERROR_NOT_SUPPORTED);
  const char* raw = library->getText(id);
  if (raw == nullptr)
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXErrorText::EventMessageText"), ERROR_NOT_FOUND, "0x%08X",
                                   static_cast<unsigned>(id));
  text = FillInsertions(raw, parameters);
  if (singleLine) MakeSingleLine(text);
  return CZuError::Success();
}

}  // namespace FXErrorText

namespace FXErrorUtil {

CZuError EnableEventMessageLookup() {
  TLookupState& state = State();
  std::lock_guard<std::mutex> guard(state.lock);
  state.enabled = true;
  if (state.library) return CZuError::Success();

  const std::string fileName = FXPlatform::SharedLibraryFileName("MsgTextLib_C");
  const boost::shared_ptr<TMessageLibrary> library = boost::make_shared<TMessageLibrary>();
  CZuError result = library->library.Load(fileName);
  if (result.IsError()) return result.Push(ZU_HERE("FXErrorUtil::EnableEventMessageLookup"));
  void* symbol = library->library.Symbol("EvGetTextRaw");
  if (symbol == nullptr)
    return ErrorWin32(ZU_HERE("FXErrorUtil::EnableEventMessageLookup"), ERROR_PROC_NOT_FOUND,
                      "EvGetTextRaw in %s", fileName.c_str());
  library->getText = reinterpret_cast<EvGetTextRawFunction>(symbol);
  state.library = library;
  return CZuError::Success();
}

CZuError UnloadAndDisableEventMessageLookup() {
  boost::shared_ptr<TMessageLibrary> released;
  {
    TLookupState& state = State();
    std::lock_guard<std::mutex> guard(state.lock);
    state.enabled = false;
    released.swap(state.library);
  }
  // The library is unloaded here, outside the lock, unless a lookup still
  // holds it.
  return CZuError::Success();
}

}  // namespace FXErrorUtil
