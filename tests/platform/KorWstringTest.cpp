#include <KorWstring.hpp>
#include <KorWstringText.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using testing::AllOf, testing::HasSubstr, testing::ResultOf, testing::StartsWith, testing::Throws;

TEST(KorWstringTest, KeyOrderIsUnsignedCodeUnitOrderWithPrefixFirst) {
  const std::less<KorWstring> less;
  // Lesser, greater: a signed comparison puts 0x8000 and 0xFFFF first; surrogates compare as units, not
  // code points; a lone surrogate is a prefix; the first difference decides, not a later one.
  const std::u16string_view rows[][2] = {{u"", std::u16string_view(u"\0", 1)},
                                         {u"btd000129", u"btd000200"},
                                         {u"B", u"a"},
                                         {u"a", u"ab"},
                                         {u"ab", u"b"},
                                         {u"\u7FFF", u"\u8000"},
                                         {u"x\u0041", u"x\uFFFF"},
                                         {u"\U00010000", u"\uFF21"},
                                         {u"\xD800", u"\xD800\xDC00"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_TRUE(less(KorWstringText::fromUtf16(row[0]), KorWstringText::fromUtf16(row[1])));
    EXPECT_FALSE(less(KorWstringText::fromUtf16(row[1]), KorWstringText::fromUtf16(row[0])));
  }
  // Only the common units are read: a cleared text's stale units beyond its length are not compared.
  KorWstring prefix = KorWstringText::fromUtf16(u"a~");
  prefix.clear();
  prefix += KorWstringText::fromUtf16(u"a");
  EXPECT_FALSE(less(KorWstringText::fromUtf16(u"az"), prefix));
  const KorWstring word = KorWstringText::fromUtf16(u"\u8000same");
  const KorWstring copy = word; // NOLINT(performance-unnecessary-copy-initialization): shares the buffer
  EXPECT_FALSE(less(word, copy) || less(copy, word) || less(word, KorWstringText::fromUtf16(u"\u8000same")));
}

TEST(KorWstringTest, CopySharesBufferAndWriteCopiesFirst) {
  KorWstring original = KorWstringText::fromUtf16(u"shared");
  KorWstring copy = original;
  EXPECT_TRUE(copy.sharesBufferWith(original));

  copy += KorWstringText::fromUtf16(u"!");
  EXPECT_FALSE(copy.sharesBufferWith(original));
  EXPECT_EQ(KorWstringText::view(original), u"shared");
  EXPECT_EQ(KorWstringText::view(copy), u"shared!");
  copy += KorWstringText::fromUtf16(u"!"); // its own buffer grows, with room to spare
  KorWstring reader = copy;
  reader += KorWstringText::fromUtf16(u"?"); // fits that room, yet must not write into it
  EXPECT_EQ(KorWstringText::view(copy), u"shared!!");

  // Clearing a shared copy lets go of the buffer; clearing a string's own
  // buffer keeps it for the next append.
  KorWstring fourth = original;
  fourth.clear();
  EXPECT_EQ(KorWstringText::view(original), u"shared");
  const KorWstring::CodeUnit* own = copy.data();
  copy.clear();
  copy += KorWstringText::fromUtf16(u"again");
  EXPECT_EQ(copy.data(), own);
  EXPECT_EQ(KorWstringText::view(copy), u"again");
  EXPECT_EQ(KorWstringText::view(reader), u"shared!!?");
  EXPECT_TRUE(fourth.empty());
}

TEST(KorWstringTest, AppendGrowsGeometricallyAndMayReadItself) {
  KorWstring text;
  int reallocations = 0;
  for (int i = 0; i < 100000; ++i) {
    const KorWstring::CodeUnit* before = text.data();
    text.append(u"x", 1);
    reallocations += text.data() != before;
  }
  EXPECT_EQ(KorWstringText::view(text), std::u16string(100000, u'x'));
  EXPECT_LE(reallocations, 20);

  KorWstring self = KorWstringText::fromUtf16(u"abc");
  self += self;
  self.append(self.data() + 1, 2);
  EXPECT_EQ(KorWstringText::view(self), u"abcabcbc");
}

TEST(KorWstringTest, Utf8ConversionsBothWays) {
  const std::pair<std::string_view, std::u16string_view> rows[] = {
      {std::string_view("a\0b\xC2\x80\xDF\xBF", 7), std::u16string_view(u"a\0b\u0080\u07FF", 5)},
      {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\u0800\uD7FF\uE000\uFFFF"},
      {"\xF0\x9F\x98\x80!\xF4\x8F\xBF\xBF", u"\U0001F600!\U0010FFFF"}};
  for (const auto& [utf8, utf16] : rows) {
    EXPECT_EQ(KorWstringText::view(KorWstringText::fromUtf8(utf8)), utf16);
    EXPECT_EQ(KorWstringText::toUtf8(KorWstringText::fromUtf16(utf16)), utf8);
  }
  // Lone surrogates become U+FFFD.
  EXPECT_EQ(KorWstringText::toUtf8(KorWstringText::fromUtf16(u"a\xD800z\xDC00\xD800"
                                                             u"end\xDBFF")),
            "a\xEF\xBF\xBDz\xEF\xBF\xBD\xEF\xBF\xBD"
            "end\xEF\xBF\xBD");
}

TEST(KorWstringTest, FromUtf8RejectsInvalidInputAtItsOffset) {
  struct Row {
    std::string_view utf8;
    std::size_t offset;
    const char* reason;
  };
  const Row rows[] = {
      {"ab\x80", 2, "continuation"},       {"\xC0\x80", 0, "overlong"},
      {"\xE0\x9F\xBF", 0, "overlong"},     {"\xF0\x8F\xBF\xBF", 0, "overlong"},
      {"\xED\xA0\x80", 0, "surrogate"},    {"\xF4\x90\x80\x80", 0, "U+10FFFF"},
      {"\xF5\x80\x80\x80", 0, "U+10FFFF"}, {"\xFF", 0, "U+10FFFF"},
      {"abc\xE2\x82", 3, "truncated"},     {"\xF0\x9F\x98", 0, "truncated"},
      {"\xE2\x41\x82", 0, "continuation"}, {"ok\xF0\x9F\x98\x41", 2, "continuation"},
  };
  for (const Row& row : rows) {
    const std::string offset = std::to_string(row.offset);
    EXPECT_THAT([&] { KorWstringText::fromUtf8(row.utf8); },
                Throws<KorWstringEncodingError>(ResultOf(
                    [](const auto& error) { return std::to_string(error.offset()) + " " + error.what(); },
                    AllOf(StartsWith(offset + " "), HasSubstr("offset " + offset), HasSubstr(row.reason)))));
  }
}

TEST(KorWstringTest, WideLiteralConversion) {
  EXPECT_TRUE(KorWstringConvertor::toKorWstring(L"").empty());
  EXPECT_EQ(KorWstringText::view(KorWstringConvertor::toKorWstring(L"a\U0001F600\U0010FFFF")),
            u"a\U0001F600\U0010FFFF");
  const wchar_t loneSurrogate[] = {L'x', static_cast<wchar_t>(0xDC01), 0};
  EXPECT_EQ(KorWstringText::view(KorWstringConvertor::toKorWstring(loneSurrogate)), u"x\xDC01");
  const wchar_t tooLarge[] = {L'x', L'y', static_cast<wchar_t>(0x110000), 0};
  EXPECT_THAT(
      [&] { KorWstringConvertor::toKorWstring(tooLarge); },
      Throws<KorWstringEncodingError>(ResultOf([](const auto& error) { return error.offset(); }, 2U)));
}

} // namespace
