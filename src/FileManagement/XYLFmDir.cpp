// SPDX-License-Identifier: Apache-2.0
// XYLFmDir: path functions, directory and temporary-file operations, and the
// I18NString conversions of the file classes. Only OS-independent code lives
// here; the services of posix/XYLFmDir_posix.inc are included at the end.
#include <XYLCore/FileManagement/XYLFmDir.h>

#include "ExceptionHierarchy/XYLStdMemory_internal.h"
#include "XYLFmOS_internal.h"
#include "XYLFmText_internal.h"

#include <XYLCore/ExceptionHierarchy/Errors/I18NRuntimeError.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace {

const std::size_t kNotFound = static_cast<std::size_t>(-1);

// Reads a path one character at a time in the given style.
class PathReader {
public:
  PathReader(const char *path, XYLFmPathStyle style)
      : m_path(path), m_windows(style == XYLFmPathStyleWindows), m_singleByte(!m_windows || MB_CUR_MAX == 1) {}

  // The length of the character at `pos`: 0 at the end of the path,
  // kNotFound for an invalid multibyte sequence.
  std::size_t charLength(std::size_t pos) const {
    const unsigned char c = static_cast<unsigned char>(m_path[pos]);
    if (c == 0)
      return 0;
    // At a character boundary a byte below 0x80 is a whole character in
    // every multibyte encoding a locale can use.
    if (m_singleByte || c < 0x80)
      return 1;
    std::mbstate_t state;
    std::memset(&state, 0, sizeof state);
    const std::size_t available = strnlen(m_path + pos, MB_CUR_MAX);
    const std::size_t n = std::mbrlen(m_path + pos, available, &state);
    if (n == static_cast<std::size_t>(-1) || n == static_cast<std::size_t>(-2) || n == 0)
      return kNotFound;
    return n;
  }

  // Whether the character of length `length` at `pos` is a separator.
  bool isSeparator(std::size_t pos, std::size_t length) const {
    if (length != 1)
      return false;
    const char c = m_path[pos];
    return c == '/' || (m_windows && c == '\\');
  }

  // Walks the whole path; false when it holds an invalid sequence.
  bool isValid() const {
    if (m_singleByte)
      return true;
    for (std::size_t pos = 0;;) {
      const std::size_t n = charLength(pos);
      if (n == 0)
        return true;
      if (n == kNotFound)
        return false;
      pos += n;
    }
  }

  // Moves `pos` over characters while they are (or are not) separators.
  std::size_t skip(std::size_t pos, bool separators) const {
    for (;;) {
      const std::size_t n = charLength(pos);
      if (n == 0 || n == kNotFound || isSeparator(pos, n) != separators)
        return pos;
      pos += n;
    }
  }

  // The position of the last separator at or after `from`, or kNotFound.
  std::size_t lastSeparator(std::size_t from) const {
    std::size_t last = kNotFound;
    for (std::size_t pos = from;;) {
      const std::size_t n = charLength(pos);
      if (n == 0 || n == kNotFound)
        return last;
      if (isSeparator(pos, n))
        last = pos;
      pos += n;
    }
  }

  // The end of the last character after `from` that is not a separator
  // (`from` when there is none).
  std::size_t endOfLastName(std::size_t from) const {
    std::size_t end = from;
    for (std::size_t pos = from;;) {
      const std::size_t n = charLength(pos);
      if (n == 0 || n == kNotFound)
        return end;
      pos += n;
      if (!isSeparator(pos - n, n))
        end = pos;
    }
  }

  std::size_t windowsRootPrefix() const {
    if (m_path[0] == '\0')
      return 0;
    const std::size_t first = charLength(0);
    if (isSeparator(0, first)) {
      if (!isSeparator(1, charLength(1)))
        return 1;
      // A network path: "\\server\share\".
      std::size_t pos = skip(2, false);
      pos = skip(pos, true);
      pos = skip(pos, false);
      return skip(pos, true);
    }
    const char c = m_path[0];
    const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    if (first == 1 && letter && m_path[1] == ':')
      return isSeparator(2, charLength(2)) ? 3 : 2;
    return 0;
  }

  std::size_t posixRootPrefix() const { return skip(0, true); }

  std::size_t rootPrefix() const {
    if (!isValid())
      return XYLFmDir::INVALID_ROOT_PREFIX;
    return m_windows ? windowsRootPrefix() : posixRootPrefix();
  }

private:
  const char *m_path;
  bool m_windows;
  bool m_singleByte;
};

// The process-wide effective working directory and how often it was set
// since it was last cleared.
struct EffectiveDirectory {
  XYLThreadCriticalSection lock{0};
  std::string directory;
  int setCount = 0;
};

// Made on first use, so that its lock is created after the thread layer.
EffectiveDirectory &effectiveDirectory() {
  static EffectiveDirectory state;
  return state;
}

// The explicit temporary directory and whether one is set.
struct TempDirectory {
  XYLThreadCriticalSection lock{0};
  std::string directory;
  bool isSet = false;
};

TempDirectory &tempDirectory() {
  static TempDirectory state;
  return state;
}

const char kDefaultTempPrefix[] = "XYLFm";
const int kTempCandidates = 500;

// A converter for the platform default encoding that stops at the first
// character it cannot convert, in either direction.
class StrictConverter {
public:
  StrictConverter() : m_converter(I18NGetPlatformDefaultEncoding()) {
    m_converter.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_STOP);
    m_converter.setBuiltInUnconvertibleOutputSequenceCallback(I18N_UNCONVERTIBLE_STOP);
  }
  const I18NConverter &get() const { return m_converter; }

private:
  I18NConverter m_converter;
};

// The native bytes of an optional I18NString argument: `bytes` stays null
// for a null argument.
bool toOptionalNative(const I18NString *text, std::string &storage, const char *&bytes) {
  bytes = nullptr;
  if (text == nullptr)
    return true;
  if (!xyl_fm::toNativePath(*text, storage))
    return false;
  bytes = storage.c_str();
  return true;
}

// Collects the entries of a directory into the lists readDir was given.
class ListCollector : public xyl_fm_os::DirectoryVisitor {
public:
  ListCollector(std::vector<std::string> *files, std::vector<std::string> *directories)
      : m_files(files), m_directories(directories) {}
  void visit(const char *name, bool isDirectory) override {
    std::vector<std::string> *list = isDirectory ? m_directories : m_files;
    if (list != nullptr)
      list->push_back(name);
  }

private:
  std::vector<std::string> *m_files;
  std::vector<std::string> *m_directories;
};

// createTempDir and createTempFile: the candidates are tried in order, each
// created exclusively.
int createTemp(const char *directory, const char *prefix, std::string &result, const char *suffix, bool file) {
  std::string path;
  if (directory == nullptr) {
    if (XYLFmDir::getTempPath(path) == 0) {
      result.clear();
      return 0;
    }
  } else {
    if (XYLFmDir::exists(directory, XYLFmDir::EXISTS_READ_WRITE_DIRECTORY) == 0) {
      result.clear();
      return 0;
    }
    path = directory;
  }
  // The prefix and the time form one name, so that an empty prefix still
  // names an entry inside the directory.
  const std::string stem =
      std::string(prefix != nullptr ? prefix : kDefaultTempPrefix) + std::to_string(xyl_fm_os::currentTime());
  if (XYLFmDir::joinPath(path, stem.c_str()) == 0) {
    result.clear();
    return 0;
  }
  std::string candidate;
  for (int n = 0; n < kTempCandidates; ++n) {
    candidate = path;
    candidate += std::to_string(n);
    if (suffix != nullptr)
      candidate += suffix;
    const bool made =
        file ? xyl_fm_os::createExclusiveFile(candidate.c_str()) : xyl_fm_os::makeDirectory(candidate.c_str());
    if (made) {
      result.swap(candidate);
      return 1;
    }
    if (xyl_fm_os::lastError() != xyl_fm_os::errorAlreadyExists())
      break;
  }
  result.clear();
  return 0;
}

int createTemp(const I18NString *directory, const I18NString *prefix, I18NString &result, const I18NString *suffix,
               bool file) {
  std::string directoryBytes, prefixBytes, suffixBytes, made;
  const char *directoryArgument, *prefixArgument, *suffixArgument;
  if (!toOptionalNative(directory, directoryBytes, directoryArgument) ||
      !toOptionalNative(prefix, prefixBytes, prefixArgument) ||
      !toOptionalNative(suffix, suffixBytes, suffixArgument) ||
      createTemp(directoryArgument, prefixArgument, made, suffixArgument, file) == 0) {
    result = I18NString();
    return 0;
  }
  // The parts came from I18NStrings; only a temporary directory named by
  // the environment can hold bytes the encoding rejects.
  if (!xyl_fm::fromNativeText(made, result)) {
    if (file)
      xyl_fm_os::unlinkFile(made.c_str());
    else
      xyl_fm_os::removeDirectory(made.c_str());
    result = I18NString();
    return 0;
  }
  return 1;
}

} // namespace

const std::size_t XYLFmDir::INVALID_ROOT_PREFIX;

std::size_t XYLFmDir::getRootPrefixLength(const char *path, XYLFmPathStyle style) {
  if (path == nullptr)
    return 0;
  return PathReader(path, style).rootPrefix();
}

namespace {
// splitPath's work, into strings of its own so that a failure leaves the
// caller's as they were.
int splitInto(const char *path, std::string &directory, std::string &name, XYLFmPathStyle style) {
  const std::size_t prefix =
      path == nullptr ? XYLFmDir::INVALID_ROOT_PREFIX : XYLFmDir::getRootPrefixLength(path, style);
  if (prefix == XYLFmDir::INVALID_ROOT_PREFIX)
    return 0;
  const std::size_t last = PathReader(path, style).lastSeparator(prefix);
  const std::size_t directoryEnd = last == kNotFound ? prefix : last;
  const std::size_t nameStart = last == kNotFound ? prefix : last + 1;
  directory.assign(path, directoryEnd);
  name.assign(path + nameStart);
  return 1;
}
} // namespace

int XYLFmDir::joinPath(std::string &base, const char *part, XYLFmPathStyle style) {
  return xyl_std_memory::onCopy(base, [&](std::string &joined) {
    if (part == nullptr || *part == '\0')
      return 1;
    const std::size_t partPrefix = getRootPrefixLength(part, style);
    if (partPrefix == INVALID_ROOT_PREFIX)
      return 0;
    if (joined.empty() || partPrefix != 0) {
      joined.assign(part);
      return 1;
    }
    const PathReader reader(joined.c_str(), style);
    if (!reader.isValid())
      return 0;
    const std::size_t last = reader.lastSeparator(0);
    const bool endsInSeparator = last != kNotFound && last + 1 == joined.size();
    if (!endsInSeparator)
      joined.push_back(style == XYLFmPathStyleWindows ? '\\' : '/');
    joined.append(part);
    return 1;
  });
}

int XYLFmDir::splitPath(const char *path, std::string *directory, std::string *name, XYLFmPathStyle style) {
  return xyl_std_memory::guarded([&] {
    std::string directoryPart, namePart;
    const int split = splitInto(path, directoryPart, namePart, style);
    if (directory != nullptr)
      directory->swap(directoryPart);
    if (name != nullptr)
      name->swap(namePart);
    return split;
  });
}

std::string &XYLFmDir::resolveEffectivePath(std::string &path) {
  return xyl_std_memory::guarded([&]() -> std::string & {
    std::string resolved;
    if (getEffectiveWorkingDir(resolved) == 0)
      return path;
    if (getRootPrefixLength(path.c_str(), XYLFmPathStyleNative) != 0)
      return path;
    if (joinPath(resolved, path.c_str(), XYLFmPathStyleNative) != 0)
      path.swap(resolved);
    return path;
  });
}

int XYLFmDir::getEffectiveWorkingDir(std::string &directory) {
  return xyl_std_memory::guarded([&] {
    EffectiveDirectory &state = effectiveDirectory();
    XYLThreadGuard guard(state.lock);
    if (state.setCount == 0) {
      directory.clear();
      return 0;
    }
    directory = state.directory;
    return 1;
  });
}

int XYLFmDir::setEffectiveWorkingDir(const char *directory) {
  EffectiveDirectory &state = effectiveDirectory();
  if (directory == nullptr || *directory == '\0') {
    XYLThreadGuard guard(state.lock);
    state.directory.clear();
    state.setCount = 0;
    return 0;
  }
  std::string value(directory);
  std::size_t prefix = getRootPrefixLength(value.c_str(), XYLFmPathStyleNative);
  if (prefix == INVALID_ROOT_PREFIX)
    return 0;
  if (prefix == 0) {
    std::string current;
    if (!xyl_fm_os::readCurrentDirectory(current) || joinPath(current, value.c_str(), XYLFmPathStyleNative) == 0)
      return 0;
    value.swap(current);
    prefix = getRootPrefixLength(value.c_str(), XYLFmPathStyleNative);
    if (prefix == INVALID_ROOT_PREFIX)
      return 0;
  }
  value.resize(PathReader(value.c_str(), XYLFmPathStyleNative).endOfLastName(prefix));

  XYLThreadGuard guard(state.lock);
  state.directory.swap(value);
  ++state.setCount;
  return 1;
}

// ---- I18NString conversions -------------------------------------------------

bool xyl_fm::toNativePath(const I18NString &path, std::string &bytes) {
  const StrictConverter converter;
  char *buffer = nullptr;
  int length = 0;
  try {
    buffer = path.toBytes(converter.get(), &length);
  } catch (I18NRuntimeError &) {
    xyl_fm_os::setLastError(xyl_fm_os::errorIllegalSequence());
    return false;
  }
  const bool hasNul = std::strlen(buffer) != static_cast<std::size_t>(length);
  if (!hasNul)
    bytes.assign(buffer, static_cast<std::size_t>(length));
  I18NString::freeBuffer(buffer);
  if (hasNul) {
    xyl_fm_os::setLastError(xyl_fm_os::errorInvalidArgument());
    return false;
  }
  return true;
}

bool xyl_fm::fromNativeText(const char *bytes, std::size_t length, I18NString &text) {
  if (length > static_cast<std::size_t>(INT_MAX)) {
    xyl_fm_os::setLastError(xyl_fm_os::errorInvalidArgument());
    return false;
  }
  const StrictConverter converter;
  try {
    I18NString converted(bytes, converter.get(), static_cast<int>(length));
    text = std::move(converted);
  } catch (I18NRuntimeError &) {
    xyl_fm_os::setLastError(xyl_fm_os::errorIllegalSequence());
    return false;
  }
  return true;
}

// ---- I18NString forms of the path functions ---------------------------------

int XYLFmDir::joinPath(I18NString &base, const I18NString &part, XYLFmPathStyle style) {
  std::string baseBytes, partBytes;
  if (!xyl_fm::toNativePath(base, baseBytes) || !xyl_fm::toNativePath(part, partBytes))
    return 0;
  if (joinPath(baseBytes, partBytes.c_str(), style) == 0)
    return 0;
  return xyl_fm::fromNativeText(baseBytes, base) ? 1 : 0;
}

int XYLFmDir::splitPath(const I18NString &path, I18NString *directory, I18NString *name, XYLFmPathStyle style) {
  std::string pathBytes, directoryBytes, nameBytes;
  I18NString directoryText, nameText;
  const bool ok = xyl_fm::toNativePath(path, pathBytes) &&
                  splitPath(pathBytes.c_str(), &directoryBytes, &nameBytes, style) != 0 &&
                  xyl_fm::fromNativeText(directoryBytes, directoryText) && xyl_fm::fromNativeText(nameBytes, nameText);
  if (!ok) {
    directoryText = I18NString();
    nameText = I18NString();
  }
  if (directory != nullptr)
    *directory = std::move(directoryText);
  if (name != nullptr)
    *name = std::move(nameText);
  return ok ? 1 : 0;
}

I18NString &XYLFmDir::resolveEffectivePath(I18NString &path) {
  std::string bytes;
  if (!xyl_fm::toNativePath(path, bytes))
    return path;
  const std::string original = bytes;
  resolveEffectivePath(bytes);
  if (bytes != original)
    xyl_fm::fromNativeText(bytes, path);
  return path;
}

// ---- Files and directories -------------------------------------------------

const int XYLFmDir::EXISTS_DIRECTORY;
const int XYLFmDir::EXISTS_FILE;
const int XYLFmDir::EXISTS_READ_WRITE_DIRECTORY;

int XYLFmDir::exists(const char *path, int mode) {
  return xyl_fm_os::pathExists(path, static_cast<unsigned int>(mode)) ? 1 : 0;
}

int XYLFmDir::createDir(const char *path) { return xyl_fm_os::makeDirectory(path) ? 1 : 0; }

int XYLFmDir::createRecursiveDir(const char *path) {
  if (createDir(path) != 0)
    return 1;
  const std::size_t prefix = path == nullptr ? INVALID_ROOT_PREFIX : getRootPrefixLength(path);
  if (prefix == INVALID_ROOT_PREFIX)
    return 0;
  const PathReader reader(path, XYLFmPathStyleNative);
  std::string partial;
  for (std::size_t pos = prefix;;) {
    const std::size_t n = reader.charLength(pos);
    if (n == 0 || n == kNotFound)
      break;
    if (reader.isSeparator(pos, n) && pos > prefix) {
      // A run of separators that ends the path is not a place to stop.
      const std::size_t next = reader.skip(pos, true);
      if (path[next] != '\0') {
        partial.assign(path, pos);
        createDir(partial.c_str());
      }
    }
    pos += n;
  }
  return createDir(path);
}

int XYLFmDir::removeFile(const char *path) { return xyl_fm_os::unlinkFile(path) ? 1 : 0; }

int XYLFmDir::renameFile(const char *from, const char *to) { return xyl_fm_os::renameNoReplace(from, to) ? 1 : 0; }

int XYLFmDir::removeDir(const char *path) {
  std::vector<std::string> files, directories;
  if (readDir(path, &files, nullptr, &directories, nullptr) == 0)
    return 0;
  std::string entry;
  for (const std::string &name : files) {
    entry = path;
    if (joinPath(entry, name.c_str()) == 0 || removeFile(entry.c_str()) == 0)
      return 0;
  }
  for (const std::string &name : directories) {
    entry = path;
    if (joinPath(entry, name.c_str()) == 0 || removeDir(entry.c_str()) == 0)
      return 0;
  }
  return xyl_fm_os::removeDirectory(path) ? 1 : 0;
}

int XYLFmDir::readDir(const char *dir, std::vector<std::string> *files, const char * /*filesText*/,
                      std::vector<std::string> *directories, const char * /*directoriesText*/) {
  if (files == nullptr && directories == nullptr)
    return 0;
  // A failure takes back what this call added to the lists.
  const std::size_t fileCount = files != nullptr ? files->size() : 0;
  const std::size_t directoryCount = directories != nullptr ? directories->size() : 0;
  try {
    ListCollector collector(files, directories);
    return xyl_fm_os::listDirectory(dir, collector) ? 1 : 0;
  } catch (std::bad_alloc &) {
    if (files != nullptr)
      files->resize(fileCount);
    if (directories != nullptr)
      directories->resize(directoryCount);
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
}

int XYLFmDir::getTempPath(std::string &result) {
  return xyl_std_memory::guarded([&] {
    {
      TempDirectory &state = tempDirectory();
      XYLThreadGuard guard(state.lock);
      if (state.isSet) {
        result = state.directory;
        return 1;
      }
    }
    // Only the first variable that is set is tried.
    static const char *const kVariables[] = {"TMP", "tmp", "TEMP", "temp"};
    for (const char *variable : kVariables) {
      const char *value = xyl_fm_os::environmentValue(variable);
      if (value == nullptr)
        continue;
      if (exists(value, EXISTS_READ_WRITE_DIRECTORY) != 0) {
        result = value;
        return 1;
      }
      break;
    }
    const char *conventional[2];
    const std::size_t count = xyl_fm_os::conventionalTempDirectories(conventional);
    for (std::size_t i = 0; i < count; ++i) {
      if (exists(conventional[i], EXISTS_READ_WRITE_DIRECTORY) != 0) {
        result = conventional[i];
        return 1;
      }
    }
    if (exists(".", EXISTS_READ_WRITE_DIRECTORY) != 0) {
      result = ".";
      return 1;
    }
    result.clear();
    return 0;
  });
}

int XYLFmDir::setTempPath(const char *directory) {
  TempDirectory &state = tempDirectory();
  if (directory == nullptr || *directory == '\0') {
    XYLThreadGuard guard(state.lock);
    state.directory.clear();
    state.isSet = false;
    return 0;
  }
  std::string value(directory);
  const std::size_t prefix = getRootPrefixLength(value.c_str());
  value.resize(PathReader(value.c_str(), XYLFmPathStyleNative).endOfLastName(prefix));
  XYLThreadGuard guard(state.lock);
  state.directory.swap(value);
  state.isSet = true;
  return 1;
}

int XYLFmDir::createTempDir(const char *directory, const char *prefix, std::string &result) {
  return xyl_std_memory::guarded([&] { return createTemp(directory, prefix, result, nullptr, false); });
}

int XYLFmDir::createTempDir(const char *directory, const char *prefix, std::string &result, const char *suffix) {
  return xyl_std_memory::guarded([&] { return createTemp(directory, prefix, result, suffix, false); });
}

int XYLFmDir::createTempFile(const char *directory, const char *prefix, std::string &result) {
  return xyl_std_memory::guarded([&] { return createTemp(directory, prefix, result, nullptr, true); });
}

int XYLFmDir::createTempFile(const char *directory, const char *prefix, std::string &result, const char *suffix) {
  return xyl_std_memory::guarded([&] { return createTemp(directory, prefix, result, suffix, true); });
}

// ---- I18NString forms of the file-system operations -------------------------

int XYLFmDir::exists(const I18NString &path, int mode) {
  std::string bytes;
  return xyl_fm::toNativePath(path, bytes) ? exists(bytes.c_str(), mode) : 0;
}

int XYLFmDir::createDir(const I18NString &path) {
  std::string bytes;
  return xyl_fm::toNativePath(path, bytes) ? createDir(bytes.c_str()) : 0;
}

int XYLFmDir::createRecursiveDir(const I18NString &path) {
  std::string bytes;
  return xyl_fm::toNativePath(path, bytes) ? createRecursiveDir(bytes.c_str()) : 0;
}

int XYLFmDir::removeFile(const I18NString &path) {
  std::string bytes;
  return xyl_fm::toNativePath(path, bytes) ? removeFile(bytes.c_str()) : 0;
}

int XYLFmDir::renameFile(const I18NString &from, const I18NString &to) {
  std::string fromBytes, toBytes;
  if (!xyl_fm::toNativePath(from, fromBytes) || !xyl_fm::toNativePath(to, toBytes))
    return 0;
  return renameFile(fromBytes.c_str(), toBytes.c_str());
}

int XYLFmDir::removeDir(const I18NString &path) {
  std::string bytes;
  return xyl_fm::toNativePath(path, bytes) ? removeDir(bytes.c_str()) : 0;
}

int XYLFmDir::readDir(const I18NString &dir, std::vector<I18NString> *files, const I18NString * /*filesText*/,
                      std::vector<I18NString> *directories, const I18NString * /*directoriesText*/) {
  if (files == nullptr && directories == nullptr)
    return 0;
  std::string bytes;
  if (!xyl_fm::toNativePath(dir, bytes))
    return 0;
  std::vector<std::string> fileNames, directoryNames;
  if (readDir(bytes.c_str(), files != nullptr ? &fileNames : nullptr, nullptr,
              directories != nullptr ? &directoryNames : nullptr, nullptr) == 0)
    return 0;
  int result = 1;
  const auto convert = [&result](const std::vector<std::string> &names, std::vector<I18NString> *list) {
    if (list == nullptr)
      return;
    for (const std::string &name : names) {
      I18NString text;
      if (xyl_fm::fromNativeText(name, text))
        list->push_back(std::move(text));
      else
        result = 0;
    }
  };
  convert(fileNames, files);
  convert(directoryNames, directories);
  return result;
}

int XYLFmDir::getTempPath(I18NString &result) {
  std::string bytes;
  if (getTempPath(bytes) == 0 || !xyl_fm::fromNativeText(bytes, result)) {
    result = I18NString();
    return 0;
  }
  return 1;
}

int XYLFmDir::createTempDir(const I18NString *directory, const I18NString *prefix, I18NString &result,
                            const I18NString *suffix) {
  return xyl_std_memory::guarded([&] { return createTemp(directory, prefix, result, suffix, false); });
}

int XYLFmDir::createTempFile(const I18NString *directory, const I18NString *prefix, I18NString &result,
                             const I18NString *suffix) {
  return xyl_std_memory::guarded([&] { return createTemp(directory, prefix, result, suffix, true); });
}

#include "posix/XYLFmDir_posix.inc"
