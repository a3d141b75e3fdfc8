// The texts of the domain items, shared by the sixteen item classes.
#pragma once

#include <cstdint>
#include <string>

#include "errors/ErrorItem.h"

enum class EErrorDomain { Win32, HResult, ErrNo, Http, Int, SQLite, TQResult, EventMessage };

namespace FXErrorText {

// The code text (T): the system's or the domain table's words for the code.
std::string CodeText(EErrorDomain domain, const FXErrorItem& item, std::int64_t value);

// The item's full text: location, domain tag, value and code text.
std::string FullText(EErrorDomain domain, const FXErrorItem& item, std::int64_t value);

// The one line for users; `description` is null for USER_SINGLE_LINE_CODE.
std::string UserText(EErrorDomain domain, const FXErrorItem& item, std::int64_t value,
                     const std::string* description);

// Int and TQResult have no code text, so their plain items show the one
// line only for USER_SINGLE_LINE_CODE.
bool HasPlainUserText(EErrorDomain domain, EErrorOutputFormat format);

}  // namespace FXErrorText
