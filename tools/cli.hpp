// Command-line parsing shared by the commands.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "formats.hpp"

namespace tqcs {

struct OptionDef {
  const char *name;  // without the leading dashes
  bool takesValue;
};

struct Args {
  std::vector<std::string> positional;
  std::map<std::string, std::string, std::less<>> values;  // flags hold ""
  bool Has(std::string_view name) const { return values.find(name) != values.end(); }
  const std::string *Get(std::string_view name) const {
    const auto it = values.find(name);
    return it == values.end() ? nullptr : &it->second;
  }
};

// "--name value", "--name=value" and flags; "--help" is always known.
std::optional<Args> ParseArgs(std::span<char *const> argv, std::span<const OptionDef> known,
                              std::string &error);

std::optional<int32_t> ParseMatrix(std::string_view text);  // sd, hd, uhd, bt601, bt709, bt2020
const char *MatrixName(int32_t matrix);
std::optional<Range> ParseRange(std::string_view text);  // full, limited
std::optional<int> ParsePositive(std::string_view text);

// Typed option readers: false (and `error` set) when the option is present and bad.
bool ReadFormat(const Args &args, const char *option, std::optional<Format> &format,
                std::string &error);
bool ReadSize(const Args &args, std::optional<Size> &size, std::string &error);
bool ReadMatrix(const Args &args, std::optional<int32_t> &matrix, std::string &error);
bool ReadThreads(const Args &args, int &threads, std::string &error);
bool ReadRange(const Args &args, const char *option, std::optional<Range> &range,
               std::string &error);
// A whole number of frames, at least `least`.
bool ReadCount(const Args &args, const char *option, int64_t least, std::optional<int64_t> &count,
               std::string &error);

// The root structure, checked; null (after a message) when unusable.
const TCS_APIStu *CheckedApi();

int Fail(const std::string &message);  // prints "tqcs: message", returns 1

int RunConvert(const Args &args);
int RunCompare(const Args &args);
int RunDemo(const Args &args);
int RunBench(const Args &args);

}  // namespace tqcs
