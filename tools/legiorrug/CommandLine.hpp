#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

// The command language, one line at a time. Blanks (space, tab, CR) separate
// words. '...' quotes literally; "..." takes the escapes \\ \" \n \r \t and
// \uXXXX (one UTF-16 code unit, so a lone surrogate can be written). Quoted
// and unquoted pieces next to each other form one word, and '' is an empty
// word. A line whose first non-blank character is # is a comment.

using Words = std::vector<std::u16string>;

// Why a line cannot be split, for a person.
struct LineError {
  std::string message;
};

// The words of one line (none for a blank or comment line). Pure: no I/O and
// no state, whatever the bytes.
std::variant<Words, LineError> splitLine(std::string_view utf8Line);

// The text as one "..." word: splitLine gives the text back. Controls (C0,
// C1, bidirectional marks) and lone surrogates are escaped, so the result is printable UTF-8.
std::string quote(std::u16string_view text);
