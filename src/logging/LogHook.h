// The process-wide line sink of the lowest layers (the result object reports
// its own allocation failures through it). Lines are discarded until a
// writer is installed; the logger installs itself when it is set up.
#pragma once

#include <cstdarg>

#include "ZuUtilsExport.h"

namespace FXLogHook {

typedef void (*LineWriter)(int level, const char* function, unsigned int line, const char* format,
                           va_list args);

// Installs `writer` (null discards again) and returns the previous one.
ZUUTILS_API LineWriter SetWriter(LineWriter writer);

ZUUTILS_API void Write(int level, const char* function, unsigned int line, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 4, 5)))
#endif
    ;

}  // namespace FXLogHook
