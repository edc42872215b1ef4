#include "CommandLine.hpp"

#include "Utf.hpp"

#include <KorWstring.hpp>
#include <KorWstringText.hpp>

#include <optional>

namespace {

bool isBlank(char16_t unit) {
  return unit == u' ' || unit == u'\t' || unit == u'\r';
}

std::size_t skipBlanks(std::u16string_view line, std::size_t i) {
  while (i < line.size() && isBlank(line[i])) {
    ++i;
  }
  return i;
}

// 1-based, in characters: a surrogate pair is one column.
std::size_t column(std::u16string_view line, std::size_t index) {
  std::size_t columns = 1;
  for (std::size_t i = 0; i < index; ++i) {
    if (!(isLowSurrogate(line[i]) && i > 0 && isHighSurrogate(line[i - 1]))) {
      ++columns;
    }
  }
  return columns;
}

LineError errorAt(std::u16string_view line, std::size_t index, const std::string& what) {
  return LineError{what + " at column " + std::to_string(column(line, index))};
}

std::optional<char16_t> hexUnit(std::u16string_view digits) {
  if (digits.size() != 4) {
    return std::nullopt;
  }
  char16_t value = 0;
  for (char16_t digit : digits) {
    int nibble = digit >= u'0' && digit <= u'9'   ? digit - u'0'
                 : digit >= u'a' && digit <= u'f' ? digit - u'a' + 10
                 : digit >= u'A' && digit <= u'F' ? digit - u'A' + 10
                                                  : -1;
    if (nibble < 0) {
      return std::nullopt;
    }
    value = static_cast<char16_t>(value << 4 | nibble);
  }
  return value;
}

// Appends the "..." piece that opens at `open` to word; returns the index
// after its closing quote.
std::variant<std::size_t, LineError> readDoubleQuoted(std::u16string_view line, std::size_t open,
                                                      std::u16string& word) {
  std::size_t i = open + 1;
  while (i < line.size() && line[i] != u'"') {
    if (line[i] != u'\\') {
      word += line[i++];
      continue;
    }
    if (i + 1 == line.size()) {
      return errorAt(line, open, "unterminated \" quote");
    }
    char16_t escape = line[i + 1];
    switch (escape) {
    case u'\\':
    case u'"':
      word += escape;
      break;
    case u'n':
      word += u'\n';
      break;
    case u'r':
      word += u'\r';
      break;
    case u't':
      word += u'\t';
      break;
    case u'u': {
      auto unit = hexUnit(line.substr(i + 2, 4));
      if (!unit) {
        return errorAt(line, i, "\\u needs four hex digits");
      }
      word += *unit;
      i += 4;
      break;
    }
    default:
      return errorAt(line, i, "unknown escape \\" + toWtf8(line.substr(i + 1, 1)));
    }
    i += 2;
  }
  if (i >= line.size()) {
    return errorAt(line, open, "unterminated \" quote");
  }
  return i + 1;
}

} // namespace

std::variant<Words, LineError> splitLine(std::string_view utf8Line) {
  KorWstring decoded;
  try {
    decoded = KorWstringText::fromUtf8(utf8Line);
  } catch (const KorWstringEncodingError& error) {
    return LineError{"invalid UTF-8 at byte " + std::to_string(error.offset() + 1)};
  }
  const std::u16string_view line = KorWstringText::view(decoded);

  Words words;
  std::size_t i = skipBlanks(line, 0);
  if (i < line.size() && line[i] == u'#') {
    return words;
  }
  while (i < line.size()) {
    Word word;
    word.fromFile = line[i] == u'@';
    i += word.fromFile ? 1 : 0;
    while (i < line.size() && !isBlank(line[i])) {
      if (line[i] == u'\'') {
        std::size_t close = line.find(u'\'', i + 1);
        if (close == std::u16string_view::npos) {
          return errorAt(line, i, "unterminated ' quote");
        }
        word.text.append(line.substr(i + 1, close - i - 1));
        i = close + 1;
      } else if (line[i] == u'"') {
        auto next = readDoubleQuoted(line, i, word.text);
        if (auto* error = std::get_if<LineError>(&next)) {
          return *error;
        }
        i = std::get<std::size_t>(next);
      } else {
        word.text += line[i++];
      }
    }
    words.push_back(std::move(word));
    i = skipBlanks(line, i);
  }
  return words;
}

bool continues(std::string_view utf8Line) {
  std::size_t start = utf8Line.find_first_not_of(" \t\r");
  if (start == std::string_view::npos || utf8Line[start] == '#') {
    return false;
  }
  char open = '\0';
  for (std::size_t i = start; i < utf8Line.size(); ++i) {
    char c = utf8Line[i];
    if (open == '\0' && (c == '\'' || c == '"')) {
      open = c;
    } else if (c == open) {
      open = '\0';
    } else if (c == '\\' && open != '\'') {
      if (i + 1 == utf8Line.size()) {
        return open == '\0';
      }
      i += open == '"' ? 1 : 0;
    }
  }
  return false;
}

std::string quote(std::u16string_view text) {
  std::string out = "\"";
  for (std::size_t i = 0; i < text.size(); ++i) {
    char16_t unit = text[i];
    bool pair = isHighSurrogate(unit) && i + 1 < text.size() && isLowSurrogate(text[i + 1]);
    if (pair) {
      out += toWtf8(text.substr(i, 2));
      ++i;
    } else if (unit == u'"' || unit == u'\\') {
      out += '\\';
      out += static_cast<char>(unit);
    } else if (unit == u'\n') {
      out += "\\n";
    } else if (unit == u'\r') {
      out += "\\r";
    } else if (unit == u'\t') {
      out += "\\t";
    } else if (isControl(unit) || isHighSurrogate(unit) || isLowSurrogate(unit)) {
      appendEscape(out, unit);
    } else {
      appendUtf8(out, unit);
    }
  }
  out += '"';
  return out;
}

std::string quote(const Word& word) {
  return (word.fromFile ? "@" : "") + quote(word.text);
}
