// zuscan: see Zuscan.h and `zuscan -help`.
#include <atomic>

#include <platform/Console.h>

#include "Zuscan.h"

namespace {
std::atomic<bool> g_interrupted{false};
void OnInterrupt() { g_interrupted.store(true); }
}  // namespace

int main(int argc, char** argv) {
  FXConsole::SetInterruptHandler(OnInterrupt);
  zuscan::TConsole console;
  console.errIsTerminal = FXConsole::IsTerminal(2);
  console.interrupted = &g_interrupted;
  return zuscan::Run(argc, argv, console);
}
