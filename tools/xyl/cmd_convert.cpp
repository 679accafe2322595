// SPDX-License-Identifier: Apache-2.0
// xyl convert --from ENC --to ENC [--mode M] [FILE...] and
// xyl normalize --form F [FILE...]: files (or standard input) to standard
// output through the library's converters and normalisation, a chunk at a
// time, so that input of any size streams through in bounded memory.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/ExceptionHierarchy/XYLThrowable.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <unicode/normalizer2.h>
#include <unicode/utf8.h>
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
      writeOut(m_buffer, static_cast<std::size_t>(produced));
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

// The ICU normaliser of a form, which knows where text may be cut.
const icu::Normalizer2 *normalizer(int form) {
  UErrorCode status = U_ZERO_ERROR;
  const bool compose = form == I18N_NORMALIZATION_NFC || form == I18N_NORMALIZATION_NFKC;
  const bool compatible = form == I18N_NORMALIZATION_NFKC || form == I18N_NORMALIZATION_NFKD;
  const icu::Normalizer2 *found = icu::Normalizer2::getInstance(nullptr, compatible ? "nfkc" : "nfc",
                                                                compose ? UNORM2_COMPOSE : UNORM2_DECOMPOSE, status);
  return U_SUCCESS(status) ? found : nullptr;
}

// Where the text held so far may be cut so that normalising the two parts
// apart gives the normal form of the whole: after its last line feed (no
// form joins characters across one), or, in a line longer than kLongRun,
// before the last character that starts a new normalisation segment. Zero
// when the text must wait for more input.
std::size_t cutPoint(const std::string &held, const icu::Normalizer2 &form) {
  const std::size_t kLongRun = 1 << 20;
  const std::size_t lineEnd = held.rfind('\n');
  if (lineEnd != std::string::npos)
    return lineEnd + 1;
  if (held.size() < kLongRun)
    return 0;
  const uint8_t *bytes = reinterpret_cast<const uint8_t *>(held.data());
  const int32_t length = static_cast<int32_t>(held.size());
  for (int32_t i = length - 1; i > length - static_cast<int32_t>(kLongRun); --i) {
    if ((bytes[i] & 0xC0) == 0x80)
      continue; // inside a character
    int32_t next = i;
    UChar32 c;
    U8_NEXT(bytes, next, length, c);
    if (c >= 0 && form.hasBoundaryBefore(c))
      return static_cast<std::size_t>(i);
  }
  return 0;
}

// Writes the normal form of `size` bytes of UTF-8; false after a message.
bool normalizeText(const char *text, std::size_t size, I18NNormalizationForms form, unsigned long long offset,
                   const char *command) {
  if (size == 0)
    return true;
  try {
    I18NString string(text, "UTF-8", static_cast<int>(size));
    string.normalize(form);
    int length = 0;
    char *bytes = string.toBytes("UTF-8", &length);
    writeOut(bytes, static_cast<std::size_t>(length));
    I18NString::freeBuffer(bytes);
    return true;
  } catch (XYLThrowable &e) {
    std::fprintf(stderr, "%s: the text from byte %llu: %s\n", command, offset, describe(e));
    return false;
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
  const icu::Normalizer2 *boundaries = normalizer(form->value);
  if (boundaries == nullptr) {
    std::fprintf(stderr, "%s: the %s data are missing\n", argv[0], formName.c_str());
    return kBadData;
  }
  Progress progress(argv[0]);
  std::string held;
  std::vector<char> chunk(65536);
  unsigned long long offset = 0; // input bytes before `held`
  auto flush = [&](std::size_t size) {
    if (!normalizeText(held.data(), size, static_cast<I18NNormalizationForms>(form->value), offset, argv[0]))
      return false;
    held.erase(0, size);
    offset += size;
    return true;
  };
  int result = forEachInput(argv[0], operands, [&](std::FILE *in, const std::string &) {
    progress.expect(in);
    std::size_t got;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), in)) > 0) {
      progress.add(got);
      held.append(chunk.data(), got);
      const std::size_t cut = cutPoint(held, *boundaries);
      if (cut != 0 && !flush(cut))
        return false;
    }
    return true;
  });
  progress.finish();
  if (result == kSuccess && !flush(held.size()))
    result = kBadData;
  return result;
}

} // namespace xyltool
