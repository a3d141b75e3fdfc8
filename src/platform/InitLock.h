// One process-wide lock for one-time initialisation that must not run twice
// (tables built on first use, libraries loaded on demand). Held briefly;
// never take another lock of the library while holding it.
#pragma once

#include <mutex>

namespace FXPlatform {

std::mutex& InitLock();

}  // namespace FXPlatform
