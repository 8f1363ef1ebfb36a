#include <array>
#include <climits>
#include <cstdarg>
#include <cstdlib>
#include <tuple>

#include "support/sit_test.h"

namespace test {
namespace {

std::string format(const char* text, ...) {
  std::array<char, 4096 + 8> buffer;
  buffer.fill('#');
  std::va_list arguments;
  va_start(arguments, text);
  msgsub(buffer.data(), text, arguments);
  va_end(arguments);
  EXPECT_EQ(std::string(buffer.data() + 4096, 8), "########");
  return buffer.data();
}

TEST(Message, Conversions) {
  EXPECT_EQ(format("%d %d %d", 70000, -5, 0), "70000 -5 0");
  EXPECT_EQ(format("%i %l", INT_MIN, INT_MIN), "-2147483648 -2147483648");
  EXPECT_EQ(format("%x %X %x %x", 255, 255, 0, -1), "0xff 0xff 0x0 0xffffffff");
  EXPECT_EQ(format("%c%c%ra", 65, 0x142), "AB\na");
  EXPECT_EQ(format("[%s] %s", static_cast<char*>(nullptr), "100%d"), "[] 100%d");
  EXPECT_EQ(format("%ld", 7), "7d");
  // Unknown pairs take no argument.
  EXPECT_EQ(format("%q %% %5d %u %%s %s", "x"), "%q %% %5d %u %%s x");
  EXPECT_EQ(format("50%"), "50%");
  // Annotations are not printed.
  EXPECT_EQ(format("%s<path of the report> done", "x"), "x done");
  EXPECT_EQ(format("%d<%s", 3, "never"), "3");
  EXPECT_EQ(format("%r<a>%c<b><c>", 'Z'), "\nZ<c>");
  EXPECT_EQ(format("%q<kept> <kept>"), "%q<kept> <kept>");
}

TEST(Message, NeverPassesItsCapacity) {
  const std::string filler(5000, 'x');
  EXPECT_EQ(format("%s%d", filler.c_str(), 1), std::string(4095, 'x'));
  for (std::size_t length = 4080; length <= 4096; ++length) {
    const std::string before(std::min<std::size_t>(length, 4095), 'x');
    for (const char* last : {"%d", "%x", "%q", "%c", "%r", "%"}) {
      const std::string whole = format((before + last).c_str(), 1234567);
      EXPECT_LE(whole.size(), 4095U);
      EXPECT_EQ(whole.substr(0, before.size()), before);
    }
  }
  EXPECT_EQ(format((std::string(4092, 'x') + "%d").c_str(), 12345), std::string(4092, 'x') + "123");
}

TEST(Numbers, OfEverySize) {
  std::array<char, 16> text{};
  EXPECT_EQ(intoal(-42, text.data()), 3);
  EXPECT_STREQ(text.data(), "-42");
  const std::pair<int, const char*> sixteen_bit[] = {
      {40000, "-25536"}, {65536, "0"}, {-32768, "-32768"}, {32767, "32767"}};
  for (const auto& [value, expected] : sixteen_bit) {
    EXPECT_EQ(intoan(value, text.data()), stlen(expected));
    EXPECT_STREQ(text.data(), expected);
  }
  EXPECT_EQ(intohl2(0xDEADBEEF, text.data()), 10);
  EXPECT_STREQ(text.data(), "0xdeadbeef");
}

TEST(Strings, CopyAndReverse) {
  std::array<char, 16> text{};
  char* end = stcopy(stcopy(text.data(), "abc"), "de");
  EXPECT_STREQ(text.data(), "abcde");
  EXPECT_EQ(end, text.data() + 5);
  reversen(text.data(), 1);
  reversen(text.data(), 4);
  EXPECT_STREQ(text.data(), "dcbae");
  reverse(text.data());
  EXPECT_STREQ(text.data(), "eabcd");
  EXPECT_EQ(stlen(""), 0);
}

TEST(Texts, Trimmed) {
  const std::pair<const char*, const char*> texts[] = {
      {"  value \n", "value"}, {"\tx\t", "\tx\t"}, {"   ", ""},   {" \n ", ""}, {"", ""},
      {"\n x", "\n x"},        {"x\r\n", "x\r"},   {"a b", "a b"}};
  for (const auto& [text, trimmed] : texts) EXPECT_EQ(taken(StringTrim(text)), trimmed);
  EXPECT_EQ(StringTrim(nullptr), nullptr);
}

TEST(Texts, ChangedInPlace) {
  std::string text = "a\r\nb\r";
  StripCRLF(text.data());
  EXPECT_EQ(text, "a \nb ");
  strreplace(text.data(), ' ', '\0');
  EXPECT_EQ(text, std::string("a\0\nb\0", 5));
  const std::pair<const char*, const char*> removals[] = {
      {"10.2B", "102B"}, {"a..b", "a.b"}, {"a...b", "a.b"}, {"x.", "x"}, {"..", "."}, {".", ""}};
  for (const auto& [whole, rest] : removals) {
    text = whole;
    strremove(text.data(), ".ignored");
    EXPECT_STREQ(text.c_str(), rest) << whole;
  }
  strremove(text.data(), "");
  StripCRLF(nullptr);
}

TEST(Texts, Fields) {
  const std::string longest(254, 'f');
  const std::tuple<unsigned, std::string, std::string> fields[] = {{2, "x:y:z", "y"},
                                                                   {3, "x:y:z", "z"},
                                                                   {4, "x:y:z", "(null)"},
                                                                   {5, "xyz", "xyz"},
                                                                   {3, "x:y:", ""},
                                                                   {4, "x:y:", "(null)"},
                                                                   {1, ":x", ""},
                                                                   {2, "", ""},
                                                                   {0, "x:y", "(null)"},
                                                                   {1, longest, longest},
                                                                   {1, longest + "f", "(null)"}};
  for (const auto& [number, text, expected] : fields) {
    const char* field = strentry(number, text.c_str(), ':');
    EXPECT_EQ(field == nullptr ? "(null)" : std::string(field), expected) << text;
  }
  EXPECT_STREQ(strentry(1, strentry(2, "a:b-c:d", ':'), '-'), "b") << "a field of a field";
}

TEST(Texts, Hexadecimal) {
  const unsigned char bytes[] = {0x0A, 0xFF, 0, 0x7F, 0x80};
  EXPECT_EQ(taken(strtohex(bytes, 2)), "0a ff ");
  EXPECT_EQ(taken(strtohex(bytes, 0)), "");
  EXPECT_EQ(taken(strtohexmax(bytes, 5, 2)), "0a ff ...");
  EXPECT_EQ(taken(strtohexmax(bytes, 5, 5)), "0a ff 00 7f 80 ");
  EXPECT_EQ(taken(strtohexmax(bytes, 1, 9)), "0a ");
  EXPECT_EQ(taken(strtohexmax(bytes, -1, -1)), "");
}

}  // namespace
}  // namespace test
