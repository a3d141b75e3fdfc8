#include "CountingNew.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> g_allocations{0};
std::atomic<bool> g_failNext{false};
}  // namespace

void* operator new(std::size_t size) {
  if (g_failNext.exchange(false)) throw std::bad_alloc();
  ++g_allocations;
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace ZuTest {

long AllocationCount() { return g_allocations.load(); }
void FailNextAllocation() { g_failNext = true; }

}  // namespace ZuTest
