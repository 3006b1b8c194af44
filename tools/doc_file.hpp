// The command line of the documentation generators (tools/api_doc.cpp,
// tools/formats_doc.cpp):
//
//   PROGRAM FILE           writes FILE
//   PROGRAM --check FILE   exits 1 when FILE differs from what would be written
#pragma once

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

namespace tqcs::tools {

// `generate` fills the text and returns false on an error it has reported.
// `source` names what the document is made from, `target` the build target
// that rewrites it.
template <class Generate>
int WriteOrCheckDoc(int argc, char **argv, const char *program, const char *source,
                    const char *target, Generate generate) {
  const bool check = argc == 3 && std::string_view(argv[1]) == "--check";
  if (argc != 2 && !check) {
    std::cerr << "usage: " << program << " [--check] FILE\n";
    return 2;
  }
  const char *path = argv[argc - 1];
  std::string text;
  if (!generate(text)) return 1;
  if (check) {
    std::ifstream file(path, std::ios::binary);
    const std::string committed{std::istreambuf_iterator<char>(file), {}};
    if (committed == text) return 0;
    std::cerr << path << " differs from " << source << ": rebuild the target " << target << "\n";
    return 1;
  }
  std::ofstream(path, std::ios::binary) << text;
  return 0;
}

}  // namespace tqcs::tools
