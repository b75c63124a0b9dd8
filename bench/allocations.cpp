#include "bench/allocations.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t g_nAllocations = 0;

}  // namespace

std::size_t bench::Allocations() {
  return g_nAllocations;
}

void* operator new(std::size_t size) {
  ++g_nAllocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  ++g_nAllocations;
  return std::malloc(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
