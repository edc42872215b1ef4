// The shell's line splitter under arbitrary bytes: it answers every line
// with words or an error, and quote() gives back every word it splits.
#include "CommandLine.hpp"

#include <KorWstring.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view line(reinterpret_cast<const char*>(data), size);
  const auto split = splitLine(line);
  const Words* words = std::get_if<Words>(&split);
  if (words == nullptr) {
    require(!std::get<LineError>(split).message.empty());
    return 0;
  }
  std::string quoted;
  for (const auto& word : *words) {
    const std::string one = quote(word);
    KorWstring::fromUtf8(one); // printable UTF-8: a strict decode succeeds
    const auto again = splitLine(one);
    require(std::holds_alternative<Words>(again) && std::get<Words>(again) == Words{word});
    quoted += (quoted.empty() ? "" : " ") + one;
  }
  const auto all = splitLine(quoted);
  require(std::holds_alternative<Words>(all) && std::get<Words>(all) == *words);
  return 0;
}
