#include "platform/Console.h"

#include <io.h>
#include <windows.h>

namespace FXConsole {

namespace {
void (*volatile g_handler)() = nullptr;

BOOL WINAPI OnConsoleEvent(DWORD event) {
  void (*handler)() = g_handler;
  if (!handler) return FALSE;
  handler();
  // The system ends the process once this returns from a close event, so
  // give the program the few seconds it allows to finish what it writes.
  if (event == CTRL_CLOSE_EVENT) ::Sleep(4000);
  return TRUE;
}
}  // namespace

bool IsTerminal(int stream) { return ::_isatty(stream) != 0; }

void SetInterruptHandler(void (*handler)()) {
  g_handler = handler;
  ::SetConsoleCtrlHandler(OnConsoleEvent, handler ? TRUE : FALSE);
}

}  // namespace FXConsole
