#include "cli.hpp"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <thread>

namespace tqcs {

std::optional<Args> ParseArgs(std::span<char *const> argv, std::span<const OptionDef> known,
                              std::string &error) {
  Args args;
  for (size_t i = 0; i < argv.size(); ++i) {
    std::string_view arg = argv[i];
    if (arg.size() < 3 || arg.substr(0, 2) != "--") {
      args.positional.emplace_back(arg);
      continue;
    }
    arg.remove_prefix(2);
    std::optional<std::string_view> inlineValue;
    if (const size_t eq = arg.find('='); eq != std::string_view::npos) {
      inlineValue = arg.substr(eq + 1);
      arg = arg.substr(0, eq);
    }
    const OptionDef *found = nullptr;
    for (const OptionDef &option : known)
      if (arg == option.name) found = &option;
    if (arg == "help") {
      args.values["help"] = "";
      continue;
    }
    if (found == nullptr) {
      error = "unknown option --" + std::string(arg);
      return std::nullopt;
    }
    if (!found->takesValue) {
      if (inlineValue) {
        error = "--" + std::string(arg) + " takes no value";
        return std::nullopt;
      }
      args.values[found->name] = "";
    } else if (inlineValue) {
      args.values[found->name] = *inlineValue;
    } else if (i + 1 < argv.size()) {
      args.values[found->name] = argv[++i];
    } else {
      error = "--" + std::string(arg) + " needs a value";
      return std::nullopt;
    }
  }
  return args;
}

namespace {
// The tool's names first (MatrixName gives them), then the standards' numbers.
constexpr std::pair<std::string_view, int32_t> kMatrices[] = {
    {"sd", TCS_MATRIX_SD},    {"hd", TCS_MATRIX_HD},    {"uhd", TCS_MATRIX_UHD},
    {"bt601", TCS_MATRIX_SD}, {"bt709", TCS_MATRIX_HD}, {"bt2020", TCS_MATRIX_UHD}};
}  // namespace

std::optional<int32_t> ParseMatrix(std::string_view text) {
  for (const auto &[name, matrix] : kMatrices)
    if (text == name) return matrix;
  return std::nullopt;
}

const char *MatrixName(int32_t matrix) {
  for (const auto &[name, value] : kMatrices)
    if (matrix == value) return name.data();
  return "?";
}

std::optional<Range> ParseRange(std::string_view text) {
  if (text == "full") return Range::kFull;
  if (text == "limited") return Range::kLimited;
  return std::nullopt;
}

std::optional<int> ParsePositive(std::string_view text) {
  int value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size() || value <= 0) return std::nullopt;
  return value;
}

namespace {
// Reads option `name` through `parse` when present; the error names the value
// and what is accepted.
template <class T, class Parse>
bool ReadOption(const Args &args, const char *name, std::optional<T> &value, Parse parse,
                const char *what, const std::string &accepted, std::string &error) {
  const std::string *text = args.Get(name);
  if (text == nullptr) return true;
  value = parse(*text);
  if (!value) error = std::string(what) + " '" + *text + "' (" + accepted + ")";
  return value.has_value();
}
}  // namespace

bool ReadFormat(const Args &args, const char *option, std::optional<Format> &format,
                std::string &error) {
  return ReadOption(args, option, format, FormatByName, "unknown format name",
                    "known: " + FormatNames(false, false), error);
}

bool ReadSize(const Args &args, std::optional<Size> &size, std::string &error) {
  return ReadOption(args, "size", size, ParseSize, "bad size", "expected WxH, e.g. 1920x1080",
                    error);
}

bool ReadMatrix(const Args &args, std::optional<int32_t> &matrix, std::string &error) {
  return ReadOption(args, "matrix", matrix, ParseMatrix, "unknown matrix",
                    "sd, hd, uhd, bt601, bt709 or bt2020", error);
}

bool ReadRange(const Args &args, const char *option, std::optional<Range> &range,
               std::string &error) {
  return ReadOption(args, option, range, ParseRange, "unknown range", "full or limited", error);
}

bool ReadCount(const Args &args, const char *option, int64_t least, std::optional<int64_t> &count,
               std::string &error) {
  const auto parse = [least](std::string_view text) -> std::optional<int64_t> {
    int64_t value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size() || value < least) return std::nullopt;
    return value;
  };
  return ReadOption(args, option, count, parse, (std::string("bad --") + option).c_str(),
                    least == 0 ? "a whole number from 0" : "a whole number from 1", error);
}

bool ReadThreads(const Args &args, int &threads, std::string &error) {
  threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  const std::string *text = args.Get("threads");
  if (text == nullptr) return true;
  const auto count = ParsePositive(*text);
  if (!count || *count > 256) {
    error = "bad thread count '" + *text + "' (1 to 256)";
    return false;
  }
  threads = *count;
  return true;
}

const TCS_APIStu *CheckedApi() {
  const TCS_APIStu *api = TCS_GetAPIStuPtr();
  const int32_t check = TCS_CheckAPIStu(api);
  if (check != TCS_CHECK_OK) {
    Fail("the library's tables are incomplete (check result " + std::to_string(check) + ")");
    return nullptr;
  }
  return api;
}

int Fail(const std::string &message) {
  std::fprintf(stderr, "tqcs: %s\n", message.c_str());
  return 1;
}

}  // namespace tqcs
