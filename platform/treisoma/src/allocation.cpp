#include "treisoma/allocation.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#ifdef TREISOMA_FAULT_INJECTION
namespace {
// Per-thread countdown to the allocation that is made to fail; -1 when
// nothing is armed.
thread_local long long countdown = -1;
thread_local bool fired = false;
} // namespace

void kelm::treisoma::fail_allocation_at(unsigned long n) noexcept {
  countdown = static_cast<long long>(n);
  fired = false;
}

void kelm::treisoma::disarm_allocation_failure() noexcept { countdown = -1; }

bool kelm::treisoma::allocation_failure_fired() noexcept { return fired; }
#endif

namespace {

// Every block starts with a head that says how to give it back: 0 for the
// heap, otherwise the length of the mapping that holds it. The head sits
// just before the pointer handed out, which keeps the alignment of the
// storage behind it (16 bytes from the heap, a cache line in a mapping).
struct block_head {
  std::size_t mapped_length;
  std::size_t from_start; // bytes from the start of the heap block or mapping
};
constexpr std::size_t heap_offset = 16;
static_assert(sizeof(block_head) <= heap_offset, "the head fits before heap storage");

#if defined(__linux__) && defined(MADV_HUGEPAGE)
// Blocks of this size and more are mapped on their own, 2 MiB aligned and
// advised for transparent huge pages. The kernel zeroes a 2 MiB page in one
// fault where small pages take 512, and random accesses into a table of
// hundreds of MiB stop missing the TLB. Allocating, writing and freeing a
// block took (one measurement on a virtual machine): 256 KiB 0.65 times as
// long from the heap as mapped, 1 MiB 2.3 times as long, 4 MiB 2.9 times,
// 32 MiB 41 times. Below 1 MiB the heap wins, and the slack of the last huge
// page would weigh more.
constexpr std::size_t huge_threshold = std::size_t(1) << 20;
constexpr std::size_t huge_page = std::size_t(2) << 20;
constexpr std::size_t mapped_offset = 64;

void* map_huge(std::size_t bytes) noexcept {
  const std::size_t length = (bytes + mapped_offset + huge_page - 1) & ~(huge_page - 1);
  // Room to align the start on a huge page; the slack is unmapped again.
  const std::size_t reserved = length + huge_page;
  void* raw = mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (raw == MAP_FAILED) return nullptr;
  unsigned char* const first = static_cast<unsigned char*>(raw);
  const std::size_t misalignment = reinterpret_cast<std::uintptr_t>(raw) & (huge_page - 1);
  const std::size_t lead = misalignment ? huge_page - misalignment : 0;
  unsigned char* const start = first + lead;
  if (lead) munmap(first, lead);
  munmap(start + length, reserved - lead - length);
  // Advice only: a kernel without transparent huge pages refuses it and the
  // mapping works on small pages.
  madvise(start, length, MADV_HUGEPAGE);
  unsigned char* storage = start + mapped_offset;
  *reinterpret_cast<block_head*>(storage - sizeof(block_head)) = {length, mapped_offset};
  return storage;
}
#endif

} // namespace

void* __vector_num_alloc(unsigned bytes) noexcept {
#ifdef TREISOMA_FAULT_INJECTION
  if (countdown >= 0 && countdown-- == 0) {
    fired = true;
    return nullptr;
  }
#endif
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  // Anonymous mappings are zero, as the heap's calloc is.
  if (bytes >= huge_threshold) return map_huge(bytes);
#endif
  unsigned char* raw = static_cast<unsigned char*>(std::calloc(std::size_t(bytes) + heap_offset, 1));
  if (!raw) return nullptr;
  unsigned char* storage = raw + heap_offset;
  *reinterpret_cast<block_head*>(storage - sizeof(block_head)) = {0, heap_offset};
  return storage;
}

void __vector_num_free(void* p) noexcept {
  if (!p) return;
  unsigned char* storage = static_cast<unsigned char*>(p);
  const block_head head = *reinterpret_cast<const block_head*>(storage - sizeof(block_head));
  unsigned char* start = storage - head.from_start;
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  if (head.mapped_length != 0) {
    munmap(start, head.mapped_length);
    return;
  }
#endif
  std::free(start);
}
