// A message library for the tests, with the export the library under test
// asks for. Texts end in CR LF as message compilers write them.
#include <cstdint>

#include "platform/ZuTypes.h"

extern "C" const char* EvGetTextRaw(DWORD id) {
  switch (id) {
    case 0x05000101: return "Cannot open %1 on volume %2.\r\n";
    case 0x05000102: return "Backup of %1 finished.\r\n%2 files failed, %3 skipped.  \r\n\r\n";
    case 0x05000103: return "%1!s! is %2!u!%% done; %3 %4 %5 %6 %7\r\n";
    case 0x05000104: return "";
    // Module 9 in the form with bit 17 set.
    case (9u << 18) | (1u << 17) | 0x123u: return "Job %1 stopped\r\n";
    default: return nullptr;
  }
}
