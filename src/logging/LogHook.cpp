#include "logging/LogHook.h"

#include <atomic>
#include <cstdint>

namespace {

// Held as an integer: the va_list in the function type carries attributes
// that std::atomic's template argument would drop with a warning.
std::atomic<std::uintptr_t> g_writer{0};

FXLogHook::LineWriter AsWriter(std::uintptr_t bits) { return reinterpret_cast<FXLogHook::LineWriter>(bits); }

}  // namespace

namespace FXLogHook {

LineWriter SetWriter(LineWriter writer) {
  return AsWriter(g_writer.exchange(reinterpret_cast<std::uintptr_t>(writer)));
}

void Write(int level, const char* function, unsigned int line, const char* format, ...) {
  const LineWriter writer = AsWriter(g_writer.load(std::memory_order_acquire));
  if (writer == nullptr) return;
  va_list args;
  va_start(args, format);
  writer(level, function, line, format, args);
  va_end(args);
}

}  // namespace FXLogHook
