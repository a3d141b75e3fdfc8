#include "platform/Console.h"

#include <csignal>
#include <initializer_list>
#include <unistd.h>

namespace FXConsole {

namespace {
void (*volatile g_handler)() = nullptr;

extern "C" void OnSignal(int) {
  if (void (*handler)() = g_handler) handler();
}
}  // namespace

bool IsTerminal(int stream) { return ::isatty(stream) == 1; }

void SetInterruptHandler(void (*handler)()) {
  g_handler = handler;
  struct sigaction action {};
  action.sa_handler = handler ? OnSignal : SIG_DFL;
  sigemptyset(&action.sa_mask);
  for (int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(signal, &action, nullptr);
}

}  // namespace FXConsole
