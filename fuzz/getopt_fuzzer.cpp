// SPDX-License-Identifier: Apache-2.0
// Option scanner fuzz target. The input is split at line feeds: the first
// line is the option string, every further line one argument after the
// program name (at most 64). getOpt runs until it reports the end. The
// argument array has exactly argc entries and no closing null, so the
// sanitizer build reports any read at or past argc. Checked: the scan ends;
// the index never decreases and passes argc only while the letters of the
// last cluster are counted (so by at most the longest argument's length); a
// returned letter occurs in the option string; an option argument points
// into one of the arguments.
#include <XYLCore/Utility/XYLUtGetOpt.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {
void check(bool condition) {
  if (!condition)
    std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::vector<std::string> lines(1);
  for (size_t i = 0; i < size; ++i) {
    if (data[i] == '\n') {
      if (lines.size() == 65)
        break;
      lines.emplace_back();
    } else {
      lines.back() += static_cast<char>(data[i]);
    }
  }
  // C strings: an embedded zero byte ends the option string or an argument.
  std::string options = lines[0].c_str();
  std::vector<std::unique_ptr<char[]>> storage;
  storage.emplace_back(new char[5]);
  std::memcpy(storage.back().get(), "prog", 5);
  size_t longest = 0;
  for (size_t i = 1; i < lines.size(); ++i) {
    storage.emplace_back(new char[lines[i].size() + 1]);
    std::memcpy(storage.back().get(), lines[i].c_str(), lines[i].size() + 1);
    longest = std::max(longest, std::strlen(storage.back().get()));
  }
  int argc = static_cast<int>(storage.size());
  std::unique_ptr<char *[]> argv(new char *[storage.size()]);
  for (size_t i = 0; i < storage.size(); ++i)
    argv[i] = storage[i].get();

  XYLUtGetOpt scanner;
  scanner.setOptErr(0);
  int previousIndex = scanner.getOptInd();
  size_t calls = 0;
  for (;;) {
    int result = scanner.getOpt(argc, argv.get(), options.c_str());
    int index = scanner.getOptInd();
    check(index >= previousIndex);
    check(static_cast<size_t>(index) <= static_cast<size_t>(argc) + longest);
    previousIndex = index;
    if (result == -1)
      break;
    check(++calls <= size + 2);
    if (result > 0)
      check(std::strchr(options.c_str(), static_cast<char>(result)) != nullptr);
    if (char *argument = scanner.getOptArg()) {
      bool inside = false;
      for (const auto &arg : storage)
        inside = inside || (argument >= arg.get() && argument <= arg.get() + std::strlen(arg.get()));
      check(inside);
    }
    check(std::strlen(scanner.getErrorMsg()) < 1024);
  }
  return 0;
}
