#include "support/page_guard.hpp"

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tqcs::test {
namespace {

size_t PageSize() { return PageGuarded::PageBytes(); }

size_t RoundUp(size_t n, size_t unit) { return (n + unit - 1) / unit * unit; }

// The platform's page calls: map read-write, protect (none, read, read-write),
// unmap.
enum class Access { None, Read, ReadWrite };
#if defined(_WIN32)
uint8_t *Map(size_t bytes) {
  return static_cast<uint8_t *>(
      VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
}
void SetAccess(uint8_t *p, size_t bytes, Access access) {
  const DWORD modes[] = {PAGE_NOACCESS, PAGE_READONLY, PAGE_READWRITE};
  DWORD old = 0;
  VirtualProtect(p, bytes, modes[static_cast<int>(access)], &old);
}
void Unmap(uint8_t *p, size_t) { VirtualFree(p, 0, MEM_RELEASE); }
size_t SystemPageBytes() {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  return info.dwPageSize;
}
#else
uint8_t *Map(size_t bytes) {
  void *m = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return m == MAP_FAILED ? nullptr : static_cast<uint8_t *>(m);
}
void SetAccess(uint8_t *p, size_t bytes, Access access) {
  const int modes[] = {PROT_NONE, PROT_READ, PROT_READ | PROT_WRITE};
  mprotect(p, bytes, modes[static_cast<int>(access)]);
}
void Unmap(uint8_t *p, size_t bytes) { munmap(p, bytes); }
size_t SystemPageBytes() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }
#endif

const char *g_faultPrefix = "";
const char *g_faultCase = nullptr;
size_t g_faultCaseSize = 0;

void OnFault(int) {
  auto say = [](const char *text, size_t n) { (void)!write(2, text, static_cast<unsigned>(n)); };
  say("\n", 1);
  say(g_faultPrefix, strlen(g_faultPrefix));
  say(g_faultCase, strnlen(g_faultCase, g_faultCaseSize));
  say("\n", 1);
  _exit(1);
}

}  // namespace

void ReportFaultsWith(const char *prefix, const char *current, size_t size) {
  g_faultPrefix = prefix;
  g_faultCase = current;
  g_faultCaseSize = size;
  std::signal(SIGSEGV, OnFault);
#if defined(SIGBUS)
  std::signal(SIGBUS, OnFault);
#endif
}

size_t PageGuarded::PageBytes() {
  static const size_t page = SystemPageBytes();
  return page;
}

PageGuarded::PageGuarded(size_t size, Guard guard) : size_(size), guard_(guard) {
  const size_t page = PageSize();
  const size_t body = RoundUp(size == 0 ? 1 : size, page);
  mapSize_ = body + page;
  map_ = Map(mapSize_);
  if (!map_) std::abort();
  if (guard == Guard::After) {
    SetAccess(map_ + body, page, Access::None);
    data_ = map_ + body - size;
  } else {
    SetAccess(map_, page, Access::None);
    data_ = map_ + page;
  }
}

PageGuarded::~PageGuarded() {
  if (map_) Unmap(map_, mapSize_);
}

PageGuarded::PageGuarded(PageGuarded &&other) noexcept
    : map_(std::exchange(other.map_, nullptr)),
      mapSize_(other.mapSize_),
      data_(other.data_),
      size_(other.size_),
      guard_(other.guard_) {}

uint8_t *PageGuarded::Reframe(size_t size) {
  if (size > capacity()) std::abort();
  const size_t page = PageSize();
  size_ = size;
  data_ = guard_ == Guard::After ? map_ + capacity() - size : map_ + page;
  return data_;
}

void PageGuarded::Protect(bool readOnly) {
  const size_t page = PageSize();
  uint8_t *first = reinterpret_cast<uint8_t *>(reinterpret_cast<uintptr_t>(data_) / page * page);
  const size_t length = RoundUp(static_cast<size_t>(data_ + size_ - first), page);
  if (size_ > 0) SetAccess(first, length, readOnly ? Access::Read : Access::ReadWrite);
}

}  // namespace tqcs::test
