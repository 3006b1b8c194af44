/* A stand-in TQCPUBase.dll with the real one's exports, as a host may ship
 * its own: its null-pointer test finds a null pointer in every run, so the
 * start-up check of TQColorSpace fails and the loader must refuse the DLL.
 * Records go to the installed sink only. */
#include <TQCPUBase.h>
#include <stdarg.h>

static TCB_LogSink g_sink;
static void *g_context;

uint32_t TCB_GetCPUInsHigh(void) { return 0; }

uint32_t TCB_GetCPUInsHighDetected(void) { return 0; }

bool TCB_HasNullPointer(void *const *first, int32_t count) {
  (void)first;
  (void)count;
  return true;
}

void TCB_SetLogSink(TCB_LogSink sink, void *context) {
  g_sink = sink;
  g_context = context;
}

void TCB_WriteLog(int32_t level, const char16_t *file, const char16_t *function,
                  const char16_t *format, ...) {
  va_list args;
  va_start(args, format);
  const char16_t *message = va_arg(args, const char16_t *);
  va_end(args);
  if (g_sink) g_sink(g_context, level, file, function, format, message);
}
