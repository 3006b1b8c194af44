// Captures every log record written while an instance lives.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace tqcs::test {

struct LogRecord {
  int32_t level;
  std::u16string file;
  std::u16string function;
  std::u16string format;
  std::u16string message;
  bool operator==(const LogRecord &) const = default;
};

class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture &) = delete;
  LogCapture &operator=(const LogCapture &) = delete;
  const std::vector<LogRecord> &records() const { return records_; }
  void clear() { records_.clear(); }

 private:
  std::vector<LogRecord> records_;
};

void PrintTo(const LogRecord &record, std::ostream *os);

// Readable form for assertion messages.
std::string ToUtf8(const std::u16string &s);

}  // namespace tqcs::test
