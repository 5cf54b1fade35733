#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>

#include "json/json_fault.h"
#include "json/json_output.h"
#include "json/json_scratch.h"
#include "json/json_text.h"
#include "wmq/json.h"

namespace wmq::testing {
namespace {

std::string faultOf(const std::string &json) {
  Scratch scratch{};
  wmq_errno = 0;
  const bool read = tokenize(json.data(), json.size(), scratch);
  scratch.release();
  EXPECT_EQ(wmq_errno, read ? 0 : WMQE_BAD_FORMAT);
  return read ? "read" : wmq_jsonerror();
}

// The bytes of the one string that the text is.
std::string decoded(const std::string &json) {
  Scratch scratch{};
  std::string text = "refused";
  if (tokenize(json.data(), json.size(), scratch)) {
    const Token &token = scratch.tokens.items[0];
    EXPECT_EQ(token.kind, TokenKind::String);
    text.assign(token.text, token.length);
    EXPECT_EQ(token.text[token.length], '\0');
  }
  scratch.release();
  return text;
}

std::string quotedJson(const std::string &text) {
  OutputText out{nullptr, 0};
  out.quote(text.data(), text.size());
  std::string json(out.text, out.size);
  std::free(out.text);
  return json;
}

// As a member of a structure, or an element of an array.
std::string scalarJson(unsigned kind, const void *value, std::size_t size) {
  OutputText out{nullptr, 0};
  LineWriter writer(out);
  writer.scalar(kind, static_cast<const char *>(value), size);
  std::string json(out.text, out.size);
  std::free(out.text);
  EXPECT_EQ(json.back(), ',');
  json.pop_back();
  return json;
}

// Short texts are looked at as one group where they lie so that this can be done.
TEST(JsonOutput, ShowsShortTextsAsItShowsLongOnes) {
  for (const std::size_t offset : {0, 1, 8}) {
    for (std::size_t length = 0; length <= 18; ++length) {
      for (std::size_t place = 0; place <= length; ++place) {
        for (int byte = 1; byte <= 255; ++byte) {
          alignas(16) char memory[48];
          std::memset(memory, '"', sizeof memory);  // behind the end nothing counts
          char *const text = memory + offset;
          std::memset(text, 'x', length);
          text[length] = '\0';
          if (place < length) text[place] = static_cast<char>(byte);
          const std::string expected = quotedJson(std::string(text, length));
          ASSERT_EQ(scalarJson(WMQ_KIND_STRING, &text, sizeof text), expected) << offset;
          ASSERT_EQ(scalarJson(WMQ_KIND_CHARS, text, length + 1), expected) << offset;
          ASSERT_EQ(scalarJson(WMQ_KIND_CHARS, text, 24), expected) << offset;
        }
      }
    }
  }
}

TEST(JsonOutput, ShowsAnArrayOfCharactersToItsEndWhereNoNulStands) {
  const std::string full(20, 'x');
  for (std::size_t size = 1; size <= full.size(); ++size)
    EXPECT_EQ(scalarJson(WMQ_KIND_CHARS, full.data(), size), quotedJson(full.substr(0, size)));
}

TEST(JsonScratch, CountsTheBytesOfAllItsParts) {
  Scratch scratch{};
  EXPECT_EQ(scratch.bytes(), 0U);
  EXPECT_TRUE(scratch.text.reserve(1000) && scratch.tokens.reserve(20) && scratch.seen.reserve(300) &&
              scratch.knownCounts.reserve(7));
  EXPECT_EQ(scratch.bytes(), 1000 + 20 * sizeof(Token) + 300 + 7 * sizeof(std::size_t));
  scratch.release();
  EXPECT_EQ(scratch.bytes(), 0U);
}

TEST(JsonScratch, RefusesMoreThanAnyMemoryHolds) {
  Growing<std::size_t> numbers{};
  for (const std::size_t wanted : {SIZE_MAX, SIZE_MAX / sizeof(std::size_t) + 1})
    EXPECT_FALSE(numbers.reserve(wanted));
  EXPECT_EQ(numbers.bytes(), 0U);
  numbers.release();
}

TEST(JsonOutput, FailsForGoodWhenItIsToHoldMoreThanAnyMemory) {
  OutputText out{nullptr, 0};
  out.append("a", 1);
  EXPECT_FALSE(out.reserve(SIZE_MAX));
  EXPECT_TRUE(out.failed);
  EXPECT_EQ(out.room(2000), nullptr);
  EXPECT_EQ(std::string(out.text, out.size), "a");
  std::free(out.text);
}

TEST(JsonOutput, HasRoomForTheLevelsOfAnyRecord) {
  LevelMemory memory;
  EXPECT_EQ(memory.Realloc(nullptr, 0, sizeof memory.memory), memory.memory);
  EXPECT_EQ(memory.Realloc(nullptr, 0, sizeof memory.memory + 1), nullptr);
}

TEST(JsonTokens, LieFlatInOrder) {
  Scratch scratch{};
  const std::string json = R"({"a":[1,-2.5e+3,[]],"b":{"c":null},"d":true,"e":false})";
  ASSERT_TRUE(tokenize(json.data(), json.size(), scratch));
  using enum TokenKind;
  const TokenKind kinds[] = {Object, String, Array, Number, Number, Array,  String,
                             Object, String, Null,  String, True,   String, False};
  ASSERT_EQ(scratch.tokens.size, std::size(kinds));
  for (std::size_t i = 0; i < std::size(kinds); ++i) EXPECT_EQ(scratch.tokens.items[i].kind, kinds[i]) << i;
  const Token *tokens = scratch.tokens.items;
  EXPECT_EQ(tokens[0].length, 4U);
  EXPECT_EQ(tokens[0].end, 14U);
  EXPECT_EQ(tokens[2].length, 3U);
  EXPECT_EQ(tokens[2].end, 6U);
  EXPECT_EQ(std::string(tokens[4].text, tokens[4].length), "-2.5e+3");
  EXPECT_EQ(tokens[5].length, 0U);
  EXPECT_STREQ(tokens[8].text, "c");
  scratch.release();
}

TEST(JsonTokens, StandForEscapedCharacters) {
  EXPECT_EQ(decoded(R"("\"\\\/\b\f\n\r\t")"), "\"\\/\b\f\n\r\t");
  EXPECT_EQ(decoded(R"("\u0041\u00e4\u20AC\ud83d\ude00\uffff")"), "Aä€😀\xef\xbf\xbf");
  // The first and the last of each length.
  EXPECT_EQ(decoded(R"("\u0001\u007f")"), "\x01\x7f");
  EXPECT_EQ(decoded(R"("\u0080\u07ff")"), "\xc2\x80\xdf\xbf");
  EXPECT_EQ(decoded(R"("\u0800\uffff")"), "\xe0\xa0\x80\xef\xbf\xbf");
  EXPECT_EQ(decoded(R"("\ud800\udc00\udbff\udfff")"), "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf");
  EXPECT_EQ(decoded("\"plain ä € 😀 \x7f\""), "plain ä € 😀 \x7f");
  EXPECT_EQ(decoded(R"("a long text that is moved \u0041 after an escape, \\ and once more")"),
            "a long text that is moved A after an escape, \\ and once more");
}

TEST(JsonTokens, TakeLoneLowSurrogatesForBytes) {
  EXPECT_EQ(decoded(R"("\udc80\uDCff")"), "\x80\xff");
  EXPECT_EQ(decoded(R"("\udce2\udc82\udcac")"), "€");
  EXPECT_EQ(decoded(R"("\ud83d\udc80")"), "💀");
}

TEST(JsonTokens, RefuseOtherLoneSurrogates) {
  const std::string lone = "a string holds a lone surrogate that stands for no byte";
  EXPECT_EQ(faultOf(R"(["\udc7f"])"), "byte 9: " + lone);
  EXPECT_EQ(faultOf(R"({"\udd00":1})"), "byte 9: " + lone);
  EXPECT_EQ(faultOf(R"("\udfff")"), "byte 8: " + lone);
  EXPECT_EQ(faultOf(R"("\ud800")"), "byte 1: The surrogate pair in string is invalid.");
  EXPECT_EQ(faultOf(R"("\udbff\u0041")"), "byte 1: The surrogate pair in string is invalid.");
  EXPECT_EQ(faultOf("\"\xed\xb2\x80\""), "byte 1: Invalid encoding in string.");
}

TEST(JsonTokens, RefuseNuls) {
  EXPECT_EQ(faultOf(R"("a\u0000b")"), "byte 10: a string holds \\u0000");
  EXPECT_EQ(faultOf(R"({"\u0000":1})"), "byte 9: a string holds \\u0000");
  EXPECT_EQ(faultOf(std::string("\"a\0b\"", 5)), "byte 2: Missing a closing quotation mark in string.");
  EXPECT_EQ(faultOf(std::string("{}\0", 3)), "byte 2: a NUL");
  EXPECT_EQ(faultOf(std::string("{}\0{}", 5)), "byte 2: a NUL");
}

TEST(JsonTokens, RefuseWhatIsNotUtf8) {
  for (const char *bytes : {"\x80", "\xc3", "\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80", "\xf0\x80\x80\x80",
                            "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff", "\xe2\x82"})
    EXPECT_EQ(faultOf(std::string("\"a") + bytes + "\""), "byte 1: Invalid encoding in string.") << bytes;
}

TEST(JsonTokens, RefuseWhatIsNotJson) {
  EXPECT_EQ(faultOf(""), "byte 0: The document is empty.");
  EXPECT_EQ(faultOf("  \t\r\n"), "byte 5: The document is empty.");
  EXPECT_EQ(faultOf("{} x"), "byte 3: The document root must not be followed by other values.");
  EXPECT_EQ(faultOf("{"), "byte 1: Missing a name for object member.");
  EXPECT_EQ(faultOf(R"({"a":1,})"), "byte 7: Missing a name for object member.");
  EXPECT_EQ(faultOf("[1,]"), "byte 3: Invalid value.");
  EXPECT_EQ(faultOf("[1 2]"), "byte 3: Missing a comma or ']' after an array element.");
  EXPECT_EQ(faultOf("\"a\nb\""), "byte 2: Invalid escape character in string.");
  EXPECT_EQ(faultOf("\"open"), "byte 5: Missing a closing quotation mark in string.");
  for (const char *json :
       {"nan", "NaN", "Infinity", "+1", "01", "1.", ".5", "1e", "--1", "0x10", "True", "'a'", "// a",
        "[1] /* a */", "\xef\xbb\xbf{}", R"("\x41")", R"("\u00g0")", "{1:2}", "{\"a\" 1}"})
    EXPECT_NE(faultOf(json), "read") << json;
}

TEST(JsonTokens, RefuseWhatIsNestedDeeperThanAnyRecord) {
  EXPECT_EQ(faultOf(std::string(32, '[') + std::string(32, ']')), "read");
  EXPECT_EQ(faultOf(std::string(33, '[') + std::string(33, ']')), "byte 33: nested too deeply");
  EXPECT_EQ(faultOf(std::string(8'000'000, '[')), "byte 33: nested too deeply");
}

TEST(JsonTokens, RefuseTextOfFourGigabytes) {
  Scratch scratch{};
  EXPECT_FALSE(tokenize("{}", SIZE_MAX, scratch));
  EXPECT_FALSE(tokenize("{}", UINT32_MAX, scratch));
  EXPECT_STREQ(wmq_jsonerror(), "the text has 4294967295 bytes, at most 4294967294 can be read");
  EXPECT_EQ(scratch.bytes(), 0U);
}

RC_GTEST_PROP(JsonText, IsTheSameBytesAfterQuotingAndReading, (const std::string &arbitrary)) {
  std::string text = arbitrary;
  const auto pieces = *rc::gen::container<std::vector<std::string>>(
      rc::gen::element<std::string>("\x80", "\xe2\x82\xac", "\xe2\x82", "\xf0\x9f\x98\x80", "\xed\xb2\x80",
                                    "\"", "\\", "\n", "\x01", "0123456789abcdef"));
  for (const std::string &piece : pieces) text += piece;
  std::erase(text, '\0');
  RC_ASSERT(decoded(quotedJson(text)) == text);
}

TEST(JsonText, EscapesWhatJsonWantsEscaped) {
  EXPECT_EQ(quotedJson(""), R"("")");
  EXPECT_EQ(quotedJson("a\"b\\c/\b\t\n\f\r\x01\x0b\x1f\x7f"),
            "\"a\\\"b\\\\c/\\b\\t\\n\\f\\r\\u0001\\u000b\\u001f\x7f\"");
  EXPECT_EQ(quotedJson("ä€😀"), R"("ä€😀")");
  EXPECT_EQ(quotedJson("\xff\xe2\x82x\x80"), R"("\udcff\udce2\udc82x\udc80")");
  EXPECT_EQ(quotedJson("\xed\xa0\x80"), R"("\udced\udca0\udc80")");
}

// Every two bytes, and sequences that go on with bytes at the boundaries, judged by their code points.
TEST(JsonText, KnowsWellFormedSequences) {
  const auto expected = [](const std::string &bytes) -> std::size_t {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const std::size_t length = byte(0) < 0xC0   ? 1
                               : byte(0) < 0xE0 ? 2
                               : byte(0) < 0xF0 ? 3
                               : byte(0) < 0xF8 ? 4
                                                : 1;
    if (length == 1 || bytes.size() < length) return 0;
    unsigned codepoint = byte(0) & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
      if ((byte(i) & 0xC0) != 0x80) return 0;
      codepoint = codepoint << 6 | (byte(i) & 0x3FU);
    }
    const unsigned least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = codepoint >= 0xD800 && codepoint < 0xE000;
    return codepoint >= least[length] && codepoint <= 0x10FFFF && !surrogate ? length : 0;
  };
  std::size_t wrong = 0;
  const auto judge = [&](const std::string &bytes) {
    if (sequenceLength(bytes.data(), bytes.data() + bytes.size()) != expected(bytes)) ++wrong;
  };
  const std::string boundaries = "\x01\x7f\x80\x8f\x90\x9f\xa0\xbf\xc0\xff";
  for (int a = 0x80; a < 0x100; ++a) {
    const std::string one(1, static_cast<char>(a));
    judge(one);
    for (int b = 0; b < 0x100; ++b) {
      const std::string two = one + static_cast<char>(b);
      judge(two);
      for (const char c : boundaries) {
        judge(two + c);
        for (const char d : boundaries) judge(two + c + d);
      }
    }
  }
  EXPECT_EQ(wrong, 0U);
}

RC_GTEST_PROP(JsonText, FindsTheFirstByteThatIsNotPlain, ()) {
  const auto plain = rc::gen::container<std::string>(rc::gen::elementOf(std::string(" !#0Az[]~")));
  const auto special = rc::gen::elementOf(std::string("\x01\x1f\"\\\x80\xa2\xff\n"));
  const std::string text = *plain + std::string(*rc::gen::inRange<std::size_t>(0, 2), *special) + *plain;
  const std::size_t first = text.find_first_of("\x01\x1f\"\\\x80\xa2\xff\n");
  const char *begin = text.data();
  const std::size_t found = static_cast<std::size_t>(skipPlain(begin, begin + text.size()) - begin);
  RC_ASSERT(found == std::min(first, text.size()));
}

TEST(JsonFaults, ShowForeignTextOnOneLine) {
  const auto shown = [](const std::string &text) {
    return std::string(Excerpt(text.data(), text.size()).text);
  };
  EXPECT_EQ(shown("plain ä"), "plain ä");
  EXPECT_EQ(shown("a\nb\x1b[1m\x7f\xff\xc2\x85"), "a?b?[1m???");
  EXPECT_EQ(shown(std::string(60, 'x')), std::string(60, 'x'));
  EXPECT_EQ(shown(std::string(100, 'x')), std::string(60, 'x') + "...");
  EXPECT_EQ(shown(std::string(59, 'x') + "€"), std::string(59, 'x') + "...");
  EXPECT_EQ(shown(std::string(100, '\xff')), std::string(60, '?') + "...");
}

TEST(JsonFaults, CutOffPathsThatAreTooLong) {
  const std::string name(1000, 'n');
  const Place outer{nullptr, name.c_str(), 0};
  const Place *place = &outer;
  std::vector<Place> chain(200);
  for (Place &inner : chain) {
    inner = {place, name.c_str(), 0};
    place = &inner;
  }
  EXPECT_FALSE(fault(WMQE_BAD_FORMAT, place, "%s", "refused"));
  EXPECT_EQ(std::string(wmq_jsonerror()).size(), 511U);
}

}  // namespace
}  // namespace wmq::testing
