// zuscan, the sample backup-catalogue agent: walks folders, decides every
// path with include and exclude rules, optionally checksums the files it
// takes, writes a catalogue of serialized property bags and compares it
// with an earlier one.
#pragma once

#include <atomic>
#include <cstdio>

namespace zuscan {

enum EExitCode { kExitDone = 0, kExitSomeFailed = 1, kExitUsage = 2, kExitFatal = 3, kExitInterrupted = 130 };

struct TConsole {
  std::FILE* out = stdout;
  std::FILE* err = stderr;
  bool errIsTerminal = false;
  // Set by the interrupt handler (or a test); polled while the scan runs.
  const std::atomic<bool>* interrupted = nullptr;
};

int Run(int argc, char** argv, const TConsole& console);

}  // namespace zuscan
