#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

// The command language, one line at a time. Blanks (space, tab, CR) separate
// words. '...' quotes literally; "..." takes the escapes \\ \" \n \r \t and
// \uXXXX (one UTF-16 code unit, so a lone surrogate can be written). Quoted
// and unquoted pieces next to each other form one word, and '' is an empty
// word. A line whose first non-blank character is # is a comment. A word
// that starts with an unquoted @ names a file that holds its value.

struct Word {
  std::u16string text;
  bool fromFile = false; // text is the name of the file that holds the value

  bool operator==(const Word& other) const { return text == other.text && fromFile == other.fromFile; }
  bool operator!=(const Word& other) const { return !(*this == other); }
};

using Words = std::vector<Word>;

// Why a line cannot be split, for a person.
struct LineError {
  std::string message;
};

// The words of one line (none for a blank or comment line). Pure: no I/O and
// no state, whatever the bytes.
std::variant<Words, LineError> splitLine(std::string_view utf8Line);

// Whether a script line goes on in the next: it ends in a backslash outside
// quotes and is no comment. The backslash and the newline then join the two.
bool continues(std::string_view utf8Line);

// The text as one "..." word: splitLine gives the text back. Controls (C0,
// C1, bidirectional marks) and lone surrogates are escaped, so the result is printable UTF-8.
std::string quote(std::u16string_view text);
// The word as splitLine reads it back: @ and the quoted file name for a file.
std::string quote(const Word& word);
