// Events, threads, alertable waits and sleeps: the few kernel calls the
// thread classes are built on, with Windows semantics on every platform.
//
// Handles: an event or a thread is a HANDLE; null and INVALID_HANDLE_VALUE
// are never valid ones. A failing call leaves its reason for
// LastSystemError() (platform/SystemError.h).
//
// Waits return WAIT_OBJECT_0 (0) when the object was signalled,
// WAIT_IO_COMPLETION (192) when queued calls ran instead, WAIT_TIMEOUT (258)
// and WAIT_FAILED (all ones) for a handle that is not valid.
// WAIT_ABANDONED (128) only comes from mutexes, which these waits do not
// take. On POSIX (see posix/Thread.cpp) the wait blocks on a futex of the
// waiting thread, chosen by measurement over a mutex + condition variable
// pair and over eventfd + poll (fewest system calls per hand-over).
#pragma once

#include <string>

#include "platform/ThreadApi.h"
#include "platform/ZuTypes.h"

namespace FXPlatform {

HANDLE CreateEventObject(bool manualReset, bool initiallySet);
bool SetEventObject(HANDLE event);
bool ResetEventObject(HANDLE event);

// Closes an event or thread handle; a thread runs on when its handle closes.
bool CloseObject(HANDLE object);
// A second handle to the same object, closed on its own.
HANDLE DuplicateObject(HANDLE object);

// milliseconds: INFINITE waits without limit.
DWORD WaitAlertable(HANDLE object, DWORD milliseconds);
// 0 when the time passed, WAIT_IO_COMPLETION when queued calls ran.
DWORD SleepAlertable(DWORD milliseconds);

typedef DWORD (*TThreadEntry)(void* context);

// A new thread, with default stack size, that does not call `entry` before
// ResumeCreatedThread: its id is known before it runs. Null on failure.
HANDLE CreateSuspendedThread(TThreadEntry entry, void* context, DWORD& threadId);
bool ResumeCreatedThread(HANDLE thread);
// STILL_ACTIVE (259) while the thread runs, then what `entry` returned.
bool GetThreadExitCode(HANDLE thread, DWORD& exitCode);
// Windows: TerminateThread. POSIX threads cannot be ended from outside
// without leaving their locks and heap blocks behind: there it fails with
// ERROR_NOT_SUPPORTED and the thread runs on.
bool TerminateThreadObject(HANDLE thread, DWORD exitCode);
// A name for debuggers: SetThreadDescription where Windows has it, the
// kernel's thread name (first 15 bytes) on Linux. Failures are ignored.
void SetThreadDescriptionText(HANDLE thread, const std::string& description);
// Whether the calling thread is the one the handle names.
bool IsCurrentThread(HANDLE thread);

}  // namespace FXPlatform
