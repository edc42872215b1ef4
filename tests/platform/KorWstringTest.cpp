#include <KorWstring.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

TEST(KorWstringTest, KeyOrderIsUnsignedCodeUnitOrderWithPrefixFirst) {
  const std::less<KorWstring> less;
  struct Row {
    std::u16string_view lesser;
    std::u16string_view greater;
  };
  const Row rows[] = {
      {u"", std::u16string_view(u"\0", 1)},
      {u"", u"a"},
      {u"B", u"a"},
      {u"a", u"ab"},
      {u"ab", u"b"},
      {u"\u7FFF", u"\u8000"},       // a signed comparison puts 0x8000 first
      {u"x\u0041", u"x\uFFFF"},     // and here 0xFFFF
      {u"\U00010000", u"\uFF21"},   // surrogates compare as units, not code points
      {u"\xD800", u"\xD800\xDC00"}, // a lone surrogate is a prefix
      {u"\xDBFF\xDFFF", u"\uE000"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << (&row - rows));
    EXPECT_TRUE(less(KorWstring(row.lesser), KorWstring(row.greater)));
    EXPECT_FALSE(less(KorWstring(row.greater), KorWstring(row.lesser)));
  }
  const KorWstring word(u"\u8000same");
  const KorWstring copy = word; // NOLINT(performance-unnecessary-copy-initialization): shares the buffer
  EXPECT_FALSE(less(word, copy) || less(copy, word) || less(word, KorWstring(u"\u8000same")));
}

TEST(KorWstringTest, CopySharesBufferAndWriteCopiesFirst) {
  KorWstring original = KorWstring(u"shared");
  KorWstring copy = original;
  EXPECT_TRUE(copy.sharesBufferWith(original));

  copy += KorWstring(u"!");
  EXPECT_FALSE(copy.sharesBufferWith(original));
  EXPECT_EQ(original.view(), u"shared");
  EXPECT_EQ(copy.view(), u"shared!");

  KorWstring third = original;
  third.resizeForOverwrite(3)[0] = u'S';
  EXPECT_EQ(original.view(), u"shared");
  EXPECT_EQ(third.view(), u"Sha");
  // Clearing a shared copy lets go of the buffer; clearing a string's own
  // buffer keeps it for the next append.
  KorWstring fourth = original;
  fourth.clear();
  EXPECT_EQ(original.view(), u"shared");
  const KorWstring::CodeUnit* own = copy.data();
  copy.clear();
  copy += KorWstring(u"again");
  EXPECT_EQ(copy.data(), own);
  EXPECT_EQ(copy.view(), u"again");
  EXPECT_TRUE(fourth.empty());
}

// Texts of one block compare by their units, are written alone and outlive
// the rest; the block hands out no more texts than it counted.
TEST(KorWstringTest, BlockTextsShareOneCountButNothingElse) {
  std::vector<KorWstring> texts;
  {
    KorWstringBlock block(7, 3);
    texts = {block.text(u"ab", 2), block.text(u"ab", 2), block.text(u"cde", 3)};
    EXPECT_TRUE(block.text(u"", 0).empty());
    EXPECT_THROW(block.text(u"a", 1), std::out_of_range);
  }
  EXPECT_THROW(KorWstringBlock(4, 2).text(u"abcde", 5), std::out_of_range);
  EXPECT_FALSE(texts[0].sharesBufferWith(texts[1]) || std::less<KorWstring>()(texts[0], texts[1]));
  EXPECT_EQ(texts[0], texts[1]);
  EXPECT_NE(texts[1], texts[2]);
  texts[1] += texts[2];
  EXPECT_EQ(texts[0].view(), u"ab");
  EXPECT_EQ(texts[1].view(), u"abcde");
  KorWstring last = std::move(texts[2]);
  texts.clear();
  last.append(u"!", 1);
  EXPECT_EQ(last.view(), u"cde!");
}

TEST(KorWstringTest, AppendGrowsGeometricallyAndMayReadItself) {
  KorWstring text;
  int reallocations = 0;
  for (int i = 0; i < 100000; ++i) {
    const KorWstring::CodeUnit* before = text.data();
    text.append(u"x", 1);
    reallocations += text.data() != before;
  }
  EXPECT_EQ(text.view(), std::u16string(100000, u'x'));
  EXPECT_LE(reallocations, 20);

  KorWstring self(u"abc");
  self += self;
  self.append(self.data() + 1, 2);
  EXPECT_EQ(self.view(), u"abcabcbc");
}

TEST(KorWstringTest, FromUtf8DecodesValidInput) {
  struct Row {
    std::string_view utf8;
    std::u16string_view expected;
  };
  const Row rows[] = {
      {"", u""},
      {std::string_view("a\0b", 3), std::u16string_view(u"a\0b", 3)},
      {"\xC2\x80\xDF\xBF", u"\u0080\u07FF"},
      {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\u0800\uD7FF\uE000\uFFFF"},
      {"\xF0\x9F\x98\x80!", u"\U0001F600!"},
      {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << (&row - rows));
    const KorWstring text = KorWstring::fromUtf8(row.utf8);
    EXPECT_EQ(text.view(), row.expected);
    EXPECT_EQ(text.toUtf8(), row.utf8);
  }
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
    SCOPED_TRACE(testing::Message() << "row " << (&row - rows));
    try {
      KorWstring::fromUtf8(row.utf8);
      ADD_FAILURE() << "no error";
    } catch (const KorWstringEncodingError& error) {
      EXPECT_EQ(error.offset(), row.offset);
      EXPECT_NE(std::string(error.what()).find("offset " + std::to_string(row.offset)), std::string::npos)
          << error.what();
      EXPECT_NE(std::string(error.what()).find(row.reason), std::string::npos) << error.what();
    }
  }
}

TEST(KorWstringTest, ToUtf8ReplacesLoneSurrogates) {
  EXPECT_EQ(KorWstring(u"a\xD800z").toUtf8(), "a\xEF\xBF\xBDz");
  EXPECT_EQ(KorWstring(u"\xDC00\xD800").toUtf8(), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(KorWstring(u"end\xDBFF").toUtf8(), "end\xEF\xBF\xBD");
}

TEST(KorWstringTest, WideLiteralConversion) {
  EXPECT_TRUE(KorWstringConvertor::toKorWstring(L"").empty());
  EXPECT_EQ(KorWstringConvertor::toKorWstring(L"a\U0001F600\U0010FFFF").view(), u"a\U0001F600\U0010FFFF");
  const wchar_t loneSurrogate[] = {L'x', static_cast<wchar_t>(0xDC01), 0};
  EXPECT_EQ(KorWstringConvertor::toKorWstring(loneSurrogate).view(), u"x\xDC01");
  const wchar_t tooLarge[] = {L'x', L'y', static_cast<wchar_t>(0x110000), 0};
  try {
    KorWstringConvertor::toKorWstring(tooLarge);
    ADD_FAILURE() << "no error";
  } catch (const KorWstringEncodingError& error) {
    EXPECT_EQ(error.offset(), 2U);
  }
}

} // namespace
