// SPDX-License-Identifier: Apache-2.0
// xyl convert --from ENC --to ENC [--mode M] [FILE...] and
// xyl normalize --form F [FILE...]: files (or standard input) to standard
// output through the library's converters and
// normalisation, a chunk (convert) or a line (normalize) at a time, so that
// input of any size streams through in bounded memory.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/ExceptionHierarchy/XYLThrowable.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace xyltool {

namespace {

struct NamedValue {
  const char *name;
  int value;
};

const NamedValue kModes[] = {{"escape", I18N_UNCONVERTIBLE_ESCAPE},
                             {"replace", I18N_UNCONVERTIBLE_REPLACE},
                             {"substitute", I18N_UNCONVERTIBLE_SUBSTITUTE},
                             {"stop", I18N_UNCONVERTIBLE_STOP}};

const NamedValue kForms[] = {{"NFC", I18N_NORMALIZATION_NFC},
                             {"NFD", I18N_NORMALIZATION_NFD},
                             {"NFKC", I18N_NORMALIZATION_NFKC},
                             {"NFKD", I18N_NORMALIZATION_NFKD}};

template <std::size_t N> const NamedValue *lookup(const NamedValue (&table)[N], const std::string &name) {
  for (const NamedValue &entry : table)
    if (name == entry.name)
      return &entry;
  return nullptr;
}

const char *describe(XYLThrowable &e) { return e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName(); }

// Moves UTF-16 text through the output converter to standard output.
class Sink {
public:
  Sink(I18NConverter &converter, const char *command) : m_converter(converter), m_command(command) {}

  bool write(const unsigned short *units, int bytes, bool flush) {
    int produced = 0;
    do {
      int consumed = 0;
      I18NErrorCodes error = I18N_SUCCESS;
      produced = m_converter.fromUnicodeStream(units, bytes, &consumed, m_buffer, sizeof m_buffer, flush, &error);
      if (error != I18N_SUCCESS) {
        std::fprintf(stderr, "%s: a character cannot be written in the target encoding (error %d)\n", m_command,
                     static_cast<int>(error));
        return false;
      }
      if (!writeAll(stdout, m_buffer, static_cast<std::size_t>(produced))) {
        std::fprintf(stderr, "%s: cannot write standard output\n", m_command);
        return false;
      }
      units += consumed / 2;
      bytes -= consumed;
    } while (bytes > 0 || produced == static_cast<int>(sizeof m_buffer));
    return true;
  }

private:
  I18NConverter &m_converter;
  const char *m_command;
  char m_buffer[65536];
};

// Converts one chunk of input; `last` flushes what the converters keep.
bool convertChunk(I18NConverter &input, Sink &sink, const char *data, int length, bool last, long long &offset,
                  const char *command) {
  std::vector<unsigned short> units(32768);
  const int capacity = static_cast<int>(units.size() * 2);
  int produced = 0;
  do {
    int consumed = 0;
    I18NErrorCodes error = I18N_SUCCESS;
    produced = input.toUnicodeStream(data, length, &consumed, units.data(), capacity, last, &error);
    if (error != I18N_SUCCESS) {
      std::fprintf(stderr, "%s: the input cannot be read in the source encoding near byte %lld (error %d)\n", command,
                   offset + consumed, static_cast<int>(error));
      return false;
    }
    data += consumed;
    length -= consumed;
    offset += consumed;
    if (!sink.write(units.data(), produced, last && length == 0))
      return false;
  } while (length > 0 || produced == capacity);
  return true;
}

std::unique_ptr<I18NConverter> openConverter(const std::string &encoding, int mode, const char *command) {
  try {
    std::unique_ptr<I18NConverter> converter(new I18NConverter(encoding.c_str()));
    converter->setBuiltInUnconvertibleInputSequenceCallback(mode);
    converter->setBuiltInUnconvertibleOutputSequenceCallback(mode);
    return converter;
  } catch (XYLThrowable &e) {
    std::fprintf(stderr, "%s: %s\n", command, describe(e));
    return nullptr;
  }
}

} // namespace

int runConvert(int argc, char **argv) {
  std::string from, to, modeName = "replace";
  bool haveFrom = false, haveTo = false;
  const ValueOption options[] = {{"--from", &from, &haveFrom}, {"--to", &to, &haveTo}, {"--mode", &modeName, nullptr}};
  std::vector<std::string> operands;
  const NamedValue *mode = nullptr;
  if (!parseValueOptions(argc, argv, options, 3, operands) || !haveFrom || !haveTo ||
      (mode = lookup(kModes, modeName)) == nullptr)
    return usage(*findCommand("convert"));
  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
  std::unique_ptr<I18NConverter> input = openConverter(from, mode->value, argv[0]);
  std::unique_ptr<I18NConverter> output = openConverter(to, mode->value, argv[0]);
  if (input == nullptr || output == nullptr)
    return kBadUsage;
  std::unique_ptr<Sink> sink(new Sink(*output, argv[0]));
  Progress progress(argv[0]);
  std::vector<char> chunk(65536);
  long long offset = 0;
  // The inputs make one stream: what the converters keep is flushed only
  // after the last of them.
  int result = forEachInput(argv[0], operands, [&](std::FILE *in, const std::string &) {
    progress.expect(in);
    std::size_t got;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), in)) > 0) {
      progress.add(got);
      if (!convertChunk(*input, *sink, chunk.data(), static_cast<int>(got), false, offset, argv[0]))
        return false;
    }
    return true;
  });
  progress.finish();
  if (result == kSuccess && !convertChunk(*input, *sink, chunk.data(), 0, true, offset, argv[0]))
    result = kBadData;
  return result;
}

int runNormalize(int argc, char **argv) {
  std::string formName;
  bool haveForm = false;
  const ValueOption options[] = {{"--form", &formName, &haveForm}};
  std::vector<std::string> operands;
  const NamedValue *form = nullptr;
  if (!parseValueOptions(argc, argv, options, 1, operands) || !haveForm || (form = lookup(kForms, formName)) == nullptr)
    return usage(*findCommand("normalize"));
  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
  Progress progress(argv[0]);
  // No normal form joins characters across a line feed, so each line is
  // normalised on its own. Each input's last line keeps its (missing) line
  // feed.
  std::string line;
  long long lineNumber = 0;
  const int result = forEachInput(argv[0], operands, [&](std::FILE *in, const std::string &) {
    progress.expect(in);
    for (int c = 0; c != EOF;) {
      line.clear();
      while ((c = std::getc(in)) != EOF && c != '\n')
        line.push_back(static_cast<char>(c));
      if (c == EOF && line.empty())
        break;
      ++lineNumber;
      progress.add(line.size() + 1);
      try {
        I18NString text(line.data(), "UTF-8", static_cast<int>(line.size()));
        text.normalize(static_cast<I18NNormalizationForms>(form->value));
        int length = 0;
        char *bytes = text.toBytes("UTF-8", &length);
        const bool written =
            writeAll(stdout, bytes, static_cast<std::size_t>(length)) && (c == EOF || writeAll(stdout, "\n", 1));
        I18NString::freeBuffer(bytes);
        if (!written) {
          std::fprintf(stderr, "%s: cannot write standard output\n", argv[0]);
          return false;
        }
      } catch (XYLThrowable &e) {
        std::fprintf(stderr, "%s: line %lld: %s\n", argv[0], lineNumber, describe(e));
        return false;
      }
    }
    return true;
  });
  progress.finish();
  return result;
}

} // namespace xyltool
