// The shell's line splitter under arbitrary bytes: it answers every line
// with words or an error, and quote() gives back every word it splits (a
// std::get that finds an error throws, which libFuzzer reports as a crash).
#include "CommandLine.hpp"

#include <KorWstring.hpp>
#include <KorWstringText.hpp>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto split = splitLine(std::string_view(reinterpret_cast<const char*>(data), size));
  const Words* words = std::get_if<Words>(&split);
  std::string quoted;
  for (const auto& word : words != nullptr ? *words : Words()) {
    const std::string one = quote(word);
    KorWstringText::fromUtf8(one); // printable UTF-8: a strict decode succeeds
    if (std::get<Words>(splitLine(one)) != Words{word}) {
      std::abort();
    }
    quoted += (quoted.empty() ? "" : " ") + one;
  }
  if (words == nullptr ? std::get<LineError>(split).message.empty()
                       : std::get<Words>(splitLine(quoted)) != *words) {
    std::abort();
  }
  return 0;
}
