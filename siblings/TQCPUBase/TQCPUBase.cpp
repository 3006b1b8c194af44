#include "TQCPUBase.h"

#include <cpuid.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

namespace {

uint64_t ReadXcr0() {
  uint32_t eax = 0;
  uint32_t edx = 0;
  __asm__ volatile("xgetbv" : "=a"(eax), "=d"(edx) : "c"(0));
  return (static_cast<uint64_t>(edx) << 32) | eax;
}

uint32_t DetectLevel() {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) return 0;
  const bool sse2 = edx & bit_SSE2;
  const bool ssse3 = ecx & bit_SSSE3;
  const bool sse41 = ecx & bit_SSE4_1;
  const bool osxsave = ecx & bit_OSXSAVE;
  const bool avx = ecx & bit_AVX;
  if (!sse2) return 0;
  if (!ssse3) return 1;
  if (!sse41) return 2;
  if (osxsave && avx && (ReadXcr0() & 6) == 6) return 4;
  return 3;
}

struct Sink {
  TCB_LogSink fn = nullptr;
  void *context = nullptr;
};
std::mutex g_sinkLock;
Sink g_sink;
std::mutex g_stderrLock;

void AppendUtf8(std::string &out, const char16_t *s) {
  if (!s) {
    out += "(null)";
    return;
  }
  for (; *s; ++s) {
    uint32_t c = *s;
    if (c >= 0xD800 && c < 0xDC00 && s[1] >= 0xDC00 && s[1] < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10) + (s[1] - 0xDC00);
      ++s;
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
}

int32_t Threshold() {
  const char *env = std::getenv("TCB_LOG_LEVEL");
  return env ? std::atoi(env) : 1;
}

}  // namespace

extern "C" uint32_t TCB_GetCPUInsHighDetected(void) {
  static const uint32_t level = DetectLevel();
  return level;
}

extern "C" uint32_t TCB_GetCPUInsHigh(void) {
  if (const char *env = std::getenv("TCB_CPU_LEVEL"); env && *env) {
    char *end = nullptr;
    const unsigned long forced = std::strtoul(env, &end, 10);
    if (end != env && *end == '\0') return static_cast<uint32_t>(forced);
  }
  return TCB_GetCPUInsHighDetected();
}

extern "C" bool TCB_HasNullPointer(void *const *first, int32_t count) {
  if (count <= 0) return false;
  if (!first) return true;
  for (int32_t i = 0; i < count; ++i)
    if (!first[i]) return true;
  return false;
}

extern "C" void TCB_SetLogSink(TCB_LogSink sink, void *context) {
  std::lock_guard<std::mutex> lock(g_sinkLock);
  g_sink = Sink{sink, context};
}

extern "C" void TCB_GetLogSink(TCB_LogSink *sink, void **context) {
  std::lock_guard<std::mutex> lock(g_sinkLock);
  if (sink) *sink = g_sink.fn;
  if (context) *context = g_sink.context;
}

extern "C" void TCB_WriteLog(int32_t level, const char16_t *file, const char16_t *function,
                             const char16_t *format, ...) {
  va_list args;
  va_start(args, format);
  const char16_t *message = va_arg(args, const char16_t *);
  va_end(args);

  Sink sink;
  {
    std::lock_guard<std::mutex> lock(g_sinkLock);
    sink = g_sink;
  }
  if (sink.fn) {
    sink.fn(sink.context, level, file, function, format, message);
    return;
  }
  if (level < Threshold()) return;

  // snprintf rather than std::to_string, whose digit table the ELF linker
  // would export as a unique symbol.
  char prefix[24];
  std::snprintf(prefix, sizeof prefix, "[TQ %d] ", static_cast<int>(level));
  std::string line = prefix;
  AppendUtf8(line, file);
  line += ' ';
  AppendUtf8(line, function);
  line += ": ";
  // The format's single conversion, %s, stands for the message.
  for (const char16_t *f = format; f && *f; ++f) {
    if (f[0] == u'%' && f[1] == u's') {
      AppendUtf8(line, message);
      ++f;
    } else {
      const char16_t one[2] = {*f, 0};
      AppendUtf8(line, one);
    }
  }
  line += '\n';
  std::lock_guard<std::mutex> lock(g_stderrLock);
  std::fwrite(line.data(), 1, line.size(), stderr);
}
