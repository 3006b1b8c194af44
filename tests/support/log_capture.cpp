#include "support/log_capture.hpp"

#include <TQCPUBase.h>

#include <ostream>

namespace tqcs::test {
namespace {

void Record(void *context, int32_t level, const char16_t *file, const char16_t *function,
            const char16_t *format, const char16_t *message) {
  auto *records = static_cast<std::vector<LogRecord> *>(context);
  auto str = [](const char16_t *s) { return s ? std::u16string(s) : std::u16string(u"(null)"); };
  records->push_back({level, str(file), str(function), str(format), str(message)});
}

}  // namespace

LogCapture::LogCapture() { TCB_SetLogSink(&Record, &records_); }
LogCapture::~LogCapture() { TCB_SetLogSink(nullptr, nullptr); }

std::string ToUtf8(const std::u16string &s) {
  std::string out;
  for (char16_t c : s) out += c < 0x80 ? static_cast<char>(c) : '?';
  return out;
}

// Lets GoogleTest print records in failure messages.
void PrintTo(const LogRecord &r, std::ostream *os) {
  *os << "{" << r.level << ", " << ToUtf8(r.file) << ", " << ToUtf8(r.function) << ", "
      << ToUtf8(r.format) << ", " << ToUtf8(r.message) << "}";
}

}  // namespace tqcs::test
