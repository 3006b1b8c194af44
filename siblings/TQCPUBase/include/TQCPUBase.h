/* TQCPUBase: processor level, null-pointer test over function-pointer runs, and
 * the log shared by the TQ libraries. */
#ifndef TQCPUBASE_H
#define TQCPUBASE_H

#include <stdbool.h>
#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h>
#endif

#if defined(_WIN32) && defined(TQCPUBASE_BUILDING)
#define TCB_API __declspec(dllexport)
#elif defined(_WIN32)
#define TCB_API __declspec(dllimport)
#elif defined(TQCPUBASE_BUILDING)
#define TCB_API __attribute__((visibility("default")))
#else
#define TCB_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Instruction-set level: 0 no SSE2, 1 SSE2, 2 SSSE3, 3 SSE4.1, 4 SSE4.1 with
 * AVX enabled by the operating system (processors with more report 4).
 * The environment variable TCB_CPU_LEVEL, when set to a number, overrides the
 * detected level (any value, so tests can force levels the caller does not
 * know). */
TCB_API uint32_t TCB_GetCPUInsHigh(void);

/* The level from cpuid and xgetbv alone, ignoring the override. */
TCB_API uint32_t TCB_GetCPUInsHighDetected(void);

/* True when any of `count` pointers starting at `first` is null. A null run
 * with a positive count is reported as holding a null pointer. */
TCB_API bool TCB_HasNullPointer(void *const *first, int32_t count);

/* One log record. `format` is a printf-like wide string whose only
 * conversion, "%s", consumes one const char16_t* argument. Records go to
 * stderr as one UTF-8 line each when their level is at least the threshold
 * (environment variable TCB_LOG_LEVEL, default 1). */
TCB_API void TCB_WriteLog(int32_t level, const char16_t *file, const char16_t *function,
                          const char16_t *format, ...);

/* Receives every record, whatever its level, instead of stderr. */
typedef void (*TCB_LogSink)(void *context, int32_t level, const char16_t *file,
                            const char16_t *function, const char16_t *format,
                            const char16_t *message);

/* Installs a sink; null restores the stderr writer. */
TCB_API void TCB_SetLogSink(TCB_LogSink sink, void *context);

/* The sink installed now (null: the stderr writer) and its context, so that
 * a host installing its own can pass every record on to the one it found. */
TCB_API void TCB_GetLogSink(TCB_LogSink *sink, void **context);

#ifdef __cplusplus
}
#endif

#endif
