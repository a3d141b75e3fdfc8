// The program's console: whether a standard stream is a terminal, and the
// user's request to interrupt (Ctrl-C; on Windows also Ctrl-Break and closing
// the console window; on POSIX also SIGTERM and SIGHUP).
#pragma once

#include "ZuUtilsExport.h"

namespace FXConsole {

// Standard streams by their C runtime numbers: 0 input, 1 output, 2 error.
ZUUTILS_API bool IsTerminal(int stream);

// Calls `handler` when the user interrupts the program. The handler runs in a
// signal handler (POSIX) or on a thread of the system's (Windows), so it may
// only set lock-free flags; the program polls them. A null handler restores
// the default (the program ends).
ZUUTILS_API void SetInterruptHandler(void (*handler)());

}  // namespace FXConsole
