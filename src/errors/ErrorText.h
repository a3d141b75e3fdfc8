// The texts of the domain items, shared by the sixteen item classes.
#pragma once

#include <cstdint>
#include <string>

#include "errors/ErrorItem.h"
#include "errors/ZuError.h"

#define ZU_ERROR_DOMAIN_ENUMERATOR(Domain, ValueType, PushFormat, ReadBack) Domain,
enum class EErrorDomain { ZU_ERROR_DOMAINS(ZU_ERROR_DOMAIN_ENUMERATOR) };
#undef ZU_ERROR_DOMAIN_ENUMERATOR

namespace FXErrorText {

// The code text (T): the system's or the domain table's words for the code,
// empty where there are none. `singleLine` asks for a text without line
// breaks; only event messages can have them (the user formats ask).
std::string CodeText(EErrorDomain domain, const FXErrorItem& item, std::int64_t value, bool singleLine);

// The event-message text of the message library with the insertion marks
// filled from `parameters` (EventMessageLibrary.cpp). Fails with
// ERROR_NOT_SUPPORTED when the lookup is off or no library is loaded and
// ERROR_NOT_FOUND when the library has no text for the id.
CZuError EventMessageText(DWORD id, const FXErrorItem::Parameters& parameters, bool singleLine,
                          std::string& text);

// Removes trailing carriage returns, line feeds and blanks, then turns each
// remaining line break (CR LF, CR or LF) into one blank.
template <class Char>
void MakeSingleLine(std::basic_string<Char>& text) {
  const Char trailing[] = {Char('\r'), Char('\n'), Char(' '), Char()};
  const auto last = text.find_last_not_of(trailing);
  text.erase(last == std::basic_string<Char>::npos ? 0 : last + 1);
  std::size_t out = 0;
  for (std::size_t in = 0; in < text.size(); ++in) {
    const Char c = text[in];
    if (c == Char('\r') || c == Char('\n')) {
      if (c == Char('\r') && in + 1 < text.size() && text[in + 1] == Char('\n')) ++in;
      text[out++] = Char(' ');
    } else {
      text[out++] = c;
    }
  }
  text.resize(out);
}

// The item's full text: location, domain tag, value and code text.
std::string FullText(EErrorDomain domain, const FXErrorItem& item, std::int64_t value);

// The one line for users; `description` is null for USER_SINGLE_LINE_CODE.
std::string UserText(EErrorDomain domain, const FXErrorItem& item, std::int64_t value,
                     const std::string* description);

// Int and TQResult have no code text, so their plain items show the one
// line only for USER_SINGLE_LINE_CODE.
bool HasPlainUserText(EErrorDomain domain, EErrorOutputFormat format);

}  // namespace FXErrorText
