// The test program's replacement of the global operator new, which counts
// its calls and can be made to fail once.
//
// On Linux it also serves the library (ELF symbol interposition). A Windows
// DLL keeps its own operator new, so there the count covers only what the
// headers inline into the test program; the Linux run covers the library.
#pragma once

namespace ZuTest {

// Calls of operator new so far in this process.
long AllocationCount();

// The next call of operator new throws std::bad_alloc.
void FailNextAllocation();

}  // namespace ZuTest
