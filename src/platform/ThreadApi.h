// Queued calls (asynchronous procedure calls) and the wait results in their
// Windows shapes, for code that queues work to a thread of the library.
//
// On Windows these are the system's own (<windows.h>). Elsewhere the library
// provides them for the threads that wait through it: every thread has a
// queue of calls, and every alertable wait or sleep of the library
// (FXEvent::WaitAlertable, the waits of CAlertableEventThread) first runs
// whatever is queued and then returns WAIT_IO_COMPLETION (192), as Windows
// does. Calls still queued when their thread ends are dropped, as on Windows.
//
// Not part of ZuUtils.h: on Windows this header brings in <windows.h>.
#pragma once

#include "ZuUtilsExport.h"
#include "platform/ZuTypes.h"

#ifdef _WIN32

#include <windows.h>

#else  // POSIX

typedef std::uintptr_t ULONG_PTR;
typedef void (*PAPCFUNC)(ULONG_PTR);

#define WAIT_OBJECT_0 0UL
#define WAIT_ABANDONED 128UL
#define WAIT_IO_COMPLETION 192UL
#define WAIT_FAILED 0xFFFFFFFFUL
#define INFINITE 0xFFFFFFFFUL
#define STILL_ACTIVE 259UL

// Queues `function(data)` to the thread; nonzero on success. Fails (0) for
// a handle that is not a thread's or a thread that has ended.
ZUUTILS_API DWORD QueueUserAPC(PAPCFUNC function, HANDLE thread, ULONG_PTR data);
// The pseudo-handle (all ones but one, as on Windows) that names the calling
// thread wherever a thread handle is taken; it needs no closing.
ZUUTILS_API HANDLE GetCurrentThread();

#endif  // _WIN32
