// Log records: every diagnostic is one TCB_WriteLog call with a level, the
// source unit, the operation's name with "()", the format "%s" and a message.
#pragma once

#include <TQCPUBase.h>

#include <cstdint>

namespace tqcs::log {

inline constexpr char16_t kFormat[] = u"%s";

enum Level : int32_t { kInfo = 0, kInvalid = 1, kFailure = 3 };

namespace unit {
inline constexpr const char16_t *kVideoColor = u"TQVideoColorAPI";
inline constexpr const char16_t *kVideoConv = u"TQVideoConvAPI";
inline constexpr const char16_t *kColorSpace = u"TQColorSpace";
inline constexpr const char16_t *kRGB24 = u"TQRGB24toOthers";
inline constexpr const char16_t *kYUV420 = u"TQYUV420toOthers";
inline constexpr const char16_t *kYUV422 = u"TQYUV422toOthers";
}  // namespace unit

namespace msg {
inline constexpr const char16_t *kInvalidParams = u"Invalid Input Parameters";
inline constexpr const char16_t *kOutOfMemory = u"Out of Memory";
inline constexpr const char16_t *kNotImplemented = u"Not Implemented";
inline constexpr const char16_t *kInvalidParamKey = u"TQCOLORSPACE_LOG_INVALID_PARAM";
inline constexpr const char16_t *kLoadOk = u"DLL Loading Succeed";
inline constexpr const char16_t *kLoadFailed = u"DLL Loading Failed";
inline constexpr const char16_t *kUnloadOk = u"DLL Unloading Succeed";
}  // namespace msg

// Who writes a record: the source unit and the operation's name with "()".
struct Site {
  const char16_t *unit;
  const char16_t *function;
};

inline void Write(Level level, const Site &site, const char16_t *message) {
  TCB_WriteLog(level, site.unit, site.function, kFormat, message);
}

}  // namespace tqcs::log

// The log name of an operation: TQCS_FN_NAME(TCS_SplitFrame) is u"TCS_SplitFrame()".
#define TQCS_FN_NAME(name) u"" #name "()"
