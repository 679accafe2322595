// SPDX-License-Identifier: Apache-2.0
#include "Resources/XYLCatalogCompiler.h"
#include "Utility/XYLUtHex_internal.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace {

// The length of the valid UTF-8 sequence at `p` (at most `remaining` bytes);
// 0 when the bytes there are not one.
std::size_t sequenceLength(const unsigned char *p, std::size_t remaining) {
  const unsigned char lead = p[0];
  if (lead < 0x80)
    return 1;
  std::size_t length;
  unsigned int value;
  unsigned int minimum;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
    value = lead & 0x1Fu;
    minimum = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    value = lead & 0x0Fu;
    minimum = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    value = lead & 0x07u;
    minimum = 0x10000;
  } else {
    return 0;
  }
  if (remaining < length)
    return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((p[i] & 0xC0u) != 0x80u)
      return 0;
    value = (value << 6) | (p[i] & 0x3Fu);
  }
  if (value < minimum || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
    return 0;
  return length;
}

void appendUtf8(std::string &out, unsigned int value) {
  if (value < 0x80) {
    out.push_back(static_cast<char>(value));
  } else if (value < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (value >> 6)));
    out.push_back(static_cast<char>(0x80 | (value & 0x3F)));
  } else if (value < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (value >> 12)));
    out.push_back(static_cast<char>(0x80 | ((value >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (value & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (value >> 18)));
    out.push_back(static_cast<char>(0x80 | ((value >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((value >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (value & 0x3F)));
  }
}

using xyl_ut::hexValue;

bool isBlank(char c) { return c == ' ' || c == '\t'; }

// Reads `digits` hexadecimal digits at line[pos..]; -1 when they are not.
long readHex(const std::string &line, std::size_t pos, int digits) {
  if (line.size() - pos < static_cast<std::size_t>(digits))
    return -1;
  long value = 0;
  for (int i = 0; i < digits; ++i) {
    const int digit = hexValue(line[pos + static_cast<std::size_t>(i)]);
    if (digit < 0)
      return -1;
    value = value * 16 + digit;
  }
  return value;
}

// Decodes the text between `begin` and `end` of `line` (escapes, control
// characters). With `quoted`, an unescaped quote ends the text and `end` is
// set to the position after it; without, the whole range is text.
bool decodeText(const std::string &line, std::size_t begin, std::size_t &end, bool quoted, std::string &text,
                std::string &problem) {
  std::size_t pos = begin;
  while (pos < end) {
    const char c = line[pos];
    if (quoted && c == '"') {
      end = pos + 1;
      return true;
    }
    if (c != '\\') {
      if ((static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F) {
        problem = "control character in the text (write it as an escape)";
        return false;
      }
      text.push_back(c);
      ++pos;
      continue;
    }
    if (pos + 1 >= end) {
      problem = "backslash at the end of the line";
      return false;
    }
    const char kind = line[pos + 1];
    pos += 2;
    switch (kind) {
    case 'n':
      text.push_back('\n');
      break;
    case 't':
      text.push_back('\t');
      break;
    case 'r':
      text.push_back('\r');
      break;
    case '\\':
    case '"':
      text.push_back(kind);
      break;
    case 'x': {
      const long value = readHex(line, pos, 2);
      if (value < 0) {
        problem = "\\x needs two hexadecimal digits";
        return false;
      }
      if (value == 0) {
        problem = "a text cannot hold a zero byte";
        return false;
      }
      text.push_back(static_cast<char>(value));
      pos += 2;
      break;
    }
    case 'u':
    case 'U': {
      const int digits = kind == 'u' ? 4 : 8;
      const long value = readHex(line, pos, digits);
      if (value < 0) {
        problem = kind == 'u' ? "\\u needs four hexadecimal digits" : "\\U needs eight hexadecimal digits";
        return false;
      }
      if (value == 0 || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        problem = "escape does not name a character that a text can hold";
        return false;
      }
      appendUtf8(text, static_cast<unsigned int>(value));
      pos += static_cast<std::size_t>(digits);
      break;
    }
    default:
      problem = std::string("unknown escape \\") + kind;
      return false;
    }
  }
  if (quoted) {
    problem = "missing closing quote";
    return false;
  }
  return true;
}

// Parses one non-blank, non-comment line.
bool parseLine(const std::string &line, std::size_t pos, XYLCatalogEntry &entry, std::string &problem) {
  unsigned long long value = 0;
  std::size_t digits = 0;
  if (line.compare(pos, 2, "0x") == 0 || line.compare(pos, 2, "0X") == 0) {
    pos += 2;
    for (int digit; pos < line.size() && (digit = hexValue(line[pos])) >= 0; ++pos, ++digits) {
      value = value * 16 + static_cast<unsigned int>(digit);
      if (value > 0xFFFFFFFFull)
        break;
    }
  } else {
    for (; pos < line.size() && line[pos] >= '0' && line[pos] <= '9'; ++pos, ++digits) {
      value = value * 10 + static_cast<unsigned int>(line[pos] - '0');
      if (value > 0xFFFFFFFFull)
        break;
    }
  }
  if (digits == 0) {
    problem = "expected a message number";
    return false;
  }
  if (value > 0xFFFFFFFFull) {
    problem = "message number out of range (at most 4294967295)";
    return false;
  }
  entry.number = static_cast<unsigned int>(value);
  if (pos < line.size() && !isBlank(line[pos])) {
    problem = "expected a space or tab after the message number";
    return false;
  }
  while (pos < line.size() && isBlank(line[pos]))
    ++pos;
  if (pos >= line.size()) {
    problem = "missing text (write \"\" for an empty one)";
    return false;
  }
  std::string text;
  if (line[pos] == '"') {
    std::size_t end = line.size();
    if (!decodeText(line, pos + 1, end, true, text, problem))
      return false;
    for (pos = end; pos < line.size() && isBlank(line[pos]); ++pos) {
    }
    if (pos < line.size() && line[pos] != '#') {
      problem = "unexpected characters after the closing quote";
      return false;
    }
  } else {
    std::size_t end = line.size();
    while (end > pos && isBlank(line[end - 1]))
      --end;
    if (!decodeText(line, pos, end, false, text, problem))
      return false;
  }
  if (!XYLCatalogCompiler::isValidUtf8(text.data(), text.size())) {
    problem = "text is not valid UTF-8";
    return false;
  }
  entry.text.swap(text);
  return true;
}

} // namespace

bool XYLCatalogCompiler::isValidUtf8(const char *text, std::size_t length) {
  const unsigned char *p = reinterpret_cast<const unsigned char *>(text);
  for (std::size_t pos = 0; pos < length;) {
    const std::size_t step = sequenceLength(p + pos, length - pos);
    if (step == 0)
      return false;
    pos += step;
  }
  return true;
}

bool XYLCatalogCompiler::parse(const char *data, std::size_t size, std::vector<XYLCatalogEntry> &entries,
                               std::string &error) {
  entries.clear();
  error.clear();
  std::map<unsigned int, unsigned int> firstLine;
  std::size_t start = 0;
  unsigned int lineNumber = 0;
  while (start < size) {
    ++lineNumber;
    std::size_t stop = start;
    while (stop < size && data[stop] != '\n')
      ++stop;
    std::string line(data + start, stop - start);
    start = stop + 1;
    if (!line.empty() && line.back() == '\r')
      line.pop_back();
    if (line.find('\0') != std::string::npos) {
      error = "line " + std::to_string(lineNumber) + ": zero byte in the source";
      return false;
    }
    std::size_t pos = 0;
    while (pos < line.size() && isBlank(line[pos]))
      ++pos;
    if (pos == line.size() || line[pos] == '#')
      continue;
    XYLCatalogEntry entry;
    entry.line = lineNumber;
    std::string problem;
    if (!parseLine(line, pos, entry, problem)) {
      error = "line " + std::to_string(lineNumber) + ": " + problem;
      return false;
    }
    const auto inserted = firstLine.emplace(entry.number, lineNumber);
    if (!inserted.second) {
      error = "line " + std::to_string(lineNumber) + ": message number " + std::to_string(entry.number) +
              " already defined on line " + std::to_string(inserted.first->second);
      return false;
    }
    entries.push_back(std::move(entry));
  }
  return true;
}

bool XYLCatalogCompiler::write(std::vector<XYLCatalogEntry> entries, std::string &image, std::string &error) {
  error.clear();
  image.clear();
  std::stable_sort(entries.begin(), entries.end(),
                   [](const XYLCatalogEntry &a, const XYLCatalogEntry &b) { return a.number < b.number; });
  unsigned long long textSize = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (i > 0 && entries[i].number == entries[i - 1].number) {
      error = "message number " + std::to_string(entries[i].number) + " appears twice";
      return false;
    }
    if (entries[i].text.find('\0') != std::string::npos) {
      error = "message " + std::to_string(entries[i].number) + " holds a zero byte";
      return false;
    }
    textSize += entries[i].text.size() + 1;
  }
  const unsigned long long total = 16 + 12ull * entries.size() + textSize;
  if (entries.size() > 0xFFFFFFFFull || textSize > 0xFFFFFFFFull || total != static_cast<std::size_t>(total)) {
    error = "catalog too large";
    return false;
  }
  image.reserve(static_cast<std::size_t>(total));
  const auto put = [&image](unsigned long long word) {
    for (int shift = 24; shift >= 0; shift -= 8)
      image.push_back(static_cast<char>((word >> shift) & 0xFF));
  };
  image.append("BMF1\0\0\0\0", 8);
  put(entries.size());
  put(textSize);
  unsigned long long offset = 0;
  for (const XYLCatalogEntry &entry : entries) {
    put(entry.number);
    put(offset);
    put(entry.text.size() + 1);
    offset += entry.text.size() + 1;
  }
  for (const XYLCatalogEntry &entry : entries) {
    image.append(entry.text);
    image.push_back('\0');
  }
  return true;
}

std::string XYLCatalogCompiler::formatEntry(unsigned int number, const char *text, std::size_t length) {
  std::string line = std::to_string(number);
  line += " \"";
  const unsigned char *p = reinterpret_cast<const unsigned char *>(text);
  char escape[16];
  for (std::size_t pos = 0; pos < length;) {
    const unsigned char c = p[pos];
    switch (c) {
    case '\\':
      line += "\\\\";
      ++pos;
      continue;
    case '"':
      line += "\\\"";
      ++pos;
      continue;
    case '\n':
      line += "\\n";
      ++pos;
      continue;
    case '\t':
      line += "\\t";
      ++pos;
      continue;
    case '\r':
      line += "\\r";
      ++pos;
      continue;
    default:
      break;
    }
    const std::size_t step = sequenceLength(p + pos, length - pos);
    if (step == 0 || c == 0) {
      std::snprintf(escape, sizeof escape, "\\x%02X", c);
      line += escape;
      ++pos;
    } else if (c < 0x20 || c == 0x7F) {
      std::snprintf(escape, sizeof escape, "\\u%04X", c);
      line += escape;
      ++pos;
    } else {
      line.append(text + pos, step);
      pos += step;
    }
  }
  line += '"';
  return line;
}
