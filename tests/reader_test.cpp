#include "oracle/comparison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <sstream>

namespace oracle {

namespace {

using tarnelLib::Result;

std::u16string wide(std::string_view ascii)
{
    return {ascii.begin(), ascii.end()};
}

std::string repeated(std::string_view part, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += part;
    return text;
}

std::u16string joined(std::initializer_list<std::u16string_view> parts)
{
    std::u16string text;
    for (const std::u16string_view part : parts)
        text += part;
    return text;
}

std::string printable(std::u16string_view text)
{
    std::string out;
    for (const char16_t unit : text) {
        if (unit >= 0x20 && unit < 0x7f)
            out.push_back(static_cast<char>(unit));
        else
            out.append("<").append(std::to_string(static_cast<unsigned int>(unit))).append(">");
    }
    return out;
}

std::u16string member(std::string_view key, std::u16string_view value)
{
    return std::u16string(u"\"").append(wide(key)).append(u"\":").append(value);
}

/// The members without which an object is refused.
std::u16string required(const Shape &shape)
{
    std::u16string text = u"\"\":0";
    for (const Shape::Member &field : shape.members) {
        if (field.isRequired)
            text.append(u",").append(member(field.key, u"7"));
    }
    return text;
}

/// Calls `visit` with each field of every level: the text before its member, its key, and the text behind.
// NOLINTNEXTLINE(misc-no-recursion): as deep as records are nested.
void forEachField(const Shape &shape, const std::u16string &before, const std::u16string &after,
                  const std::function<void(const std::u16string &, std::string_view, const std::u16string &)> &visit)
{
    const std::u16string start = before + u"{" + required(shape) + u",";
    const std::u16string end = u"}" + after;
    for (const Shape::Member &field : shape.members) {
        visit(start, field.key, end);
        if (field.type == Shape::Type::Objects)
            forEachField(*field.object, start + member(field.key, u"["), u"]" + end, visit);
        else if (field.type == Shape::Type::Object)
            forEachField(*field.object, start + member(field.key, u""), end, visit);
    }
}

/// How often the texts gave each code: a table of which all is refused would show nothing.
struct Codes {
    std::size_t accepted = 0;
    std::size_t refused = 0;
    std::size_t malformed = 0;

    void expectEnoughOfEach() const
    {
        EXPECT_GT(accepted, 100U);
        EXPECT_GT(refused, 100U);
        EXPECT_GT(malformed, 100U);
    }
};

void expectSame(const Reading &reading, std::u16string_view text, Codes &codes)
{
    const Comparison comparison = reading.compare(text);
    EXPECT_TRUE(comparison.isSame) << reading.name << ": " << printable(text) << "\nexpected "
                                   << static_cast<unsigned int>(comparison.expected) << ' '
                                   << comparison.expectedRecords << "\nactual "
                                   << static_cast<unsigned int>(comparison.actual) << ' ' << comparison.actualRecords;
    codes.accepted += comparison.expected == Result::Success ? 1 : 0;
    codes.refused += comparison.expected == Result::InvalidRequest ? 1 : 0;
    codes.malformed += comparison.expected == Result::InvalidArgument ? 1 : 0;
}

/// Values of every type, and what is nearly one.
std::vector<std::u16string> values()
{
    std::vector<std::u16string> list{u"", u" ", u"\f7", u"7\b", u" \t\r\n7 \t\r\n", u"\"a\nb\"", u"\"\x7f\x01\""};
    std::istringstream words(R"(
        0 -0 -0.0 1 -1 01 +1 - --1 1. .5 -.5 . 1.0 1.5 -2.5 1e2 1E+2 1e-2 1e 1e+ 1e400 -1e400 1e-400 0e400 0e-400
        5e-324 2e-324 1.7976931348623158e308 1.7976931348623159e308 0x1 1_0 inf nan 300 2147483647 2147483648
        -2147483648 -2147483649 4294967296 999999999999999 9007199254740993 -9007199254740993 9223372036854775807
        9223372036854775808 -9223372036854775808 -9223372036854775809 18446744073709551615 18446744073709551616
        10000000000000000000000 0.1000000000000000055511151231257827 true false null nul tru fals nulll True tnull n t
        {} [] [1] [null] [1,] [,1] [[1]] [{}] [{"id":1,}] {"id"} {"id":} {"a":1,"a":"x"} {"a":[}] {a:1} {,} [} ] } , :
        " "a "\" 'a' /**/1 "" "a" "\"\\\/\b\f\n\r\t" "\u0041\u00e9" "\u0000" "a\u0000b" "\ud800" "\udc00\ud800"
        "\ud834\udd1e" "\ud834x\udd1e" "\uFEFF\ufffe\uffff" "\x\a\0\'\{" "\u" "\u12" "\u123" "\u12g4" "\U0041"
    )");
    for (std::string word; words >> word;)
        list.push_back(wide(word));
    for (const std::size_t length : {31U, 32U, 33U, 300U, 400U}) {
        list.push_back(wide(repeated("9", length)));
        list.push_back(wide("0." + repeated("0", length) + "1"));
        list.push_back(wide(repeated("9", length) + "e-" + std::to_string(length)));
    }
    for (const std::u16string_view text :
         {u"\xe9", u"\x20ac", u"\xd834\xdd1e", u"\xd834", u"\xdd1e", u"\xd834 \xdd1e", u"\xd834\xd834\xdd1e",
          u"\xdd1e\xd834", u"\xfffe", u"\xffff", u"\xfeff", u"\xfeff\xfeff", u"\x2028", u"\xa0", u"\x85"}) {
        for (const std::u16string_view start : {u"", u"\"", u"\"a\\", u"\"\\ud834"})
            list.push_back(std::u16string(start).append(text).append(start.substr(0, 1)));
        list.push_back(std::u16string(u"\"").append(text).append(u"\\n\""));
    }
    return list;
}

} // namespace

TEST(Reader, readsEveryValueOfEveryFieldAsQtDoes)
{
    Codes codes;
    const std::vector<std::u16string> all = values();
    for (const Reading &reading : readings()) {
        const auto tryValues = [&](const std::u16string &before, std::string_view key, const std::u16string &after) {
            for (const std::u16string &value : all)
                expectSame(reading, joined({before, member(key, value), after}), codes);
            for (std::size_t depth = 1015; depth <= 1025; ++depth) {
                const std::u16string arrays = wide(repeated("[", depth) + repeated("]", depth));
                const std::u16string objects = wide(repeated(R"({"":)", depth) + "1" + repeated("}", depth));
                for (const std::string_view name : {key, std::string_view("unknown")}) {
                    expectSame(reading, joined({before, member(name, arrays), after}), codes);
                    expectSame(reading, joined({before, member(name, objects), after}), codes);
                }
            }
        };
        forEachField(*reading.shape, wide(reading.before), wide(reading.after), tryValues);
    }
    codes.expectEnoughOfEach();
}

TEST(Reader, readsRepeatedAndAlternativeKeysAsQtDoes)
{
    Codes codes;
    const std::vector<std::u16string> some{u"1", u"\"a\"", u"null", u"[]", u"{}", u"[2]", u"{\"lat\":-0.0}"};
    for (const Reading &reading : readings()) {
        const std::u16string before = wide(reading.before);
        const std::u16string after = wide(reading.after);
        const std::u16string all = required(*reading.shape);
        const std::u16string whole = joined({before, u"{", all, u"}"});
        const auto tryMembers = [&](const std::u16string &members) {
            expectSame(reading, joined({before, u"{", members, u"}", after}), codes);
            expectSame(reading, joined({before, u"{", all, u",", members, u"}", after}), codes);
            expectSame(reading, joined({before, u"{", members, u",", all, u"}", after}), codes);
        };
        for (const std::u16string &value : some) {
            for (const std::u16string &other : some) {
                for (const Shape::Member &first : reading.shape->members) {
                    for (const Shape::Member &second : reading.shape->members)
                        tryMembers(joined({member(first.key, value), u",", member(second.key, other)}));
                    // The same key, of which an escape stands for the first character.
                    std::string hexadecimal = "\\u0000";
                    std::snprintf(hexadecimal.data() + 2, 5, "%04x", first.key.front());
                    const std::string escaped = hexadecimal + std::string(first.key.substr(1));
                    tryMembers(joined({member(first.key, value), u",", member(escaped, other)}));
                    tryMembers(joined({member(escaped, value), u",", member(first.key, other)}));
                }
            }
            for (const std::u16string &end : {after.substr(1), after.substr(after.size() - 1)}) {
                const std::u16string open = whole + after.substr(0, after.size() - end.size());
                for (const std::string_view key : {"items", "D", "\\u0044", "d"})
                    expectSame(reading, joined({open, u",", member(key, value), end}), codes);
            }
            expectSame(reading, u"{" + member("D", value) + u"," + whole.substr(1) + after, codes);
            expectSame(reading, u"{\"D\":{" + member("items", value) + u"," + whole.substr(6) + after, codes);
        }
    }
    codes.expectEnoughOfEach();
}

TEST(Reader, readsDamagedTextsAsQtDoes)
{
    Codes codes;
    for (const Reading &reading : readings()) {
        for (const std::u16string_view last : {u"1", u"null"}) {
            const std::u16string whole = wide(reading.before) + u"{" + required(*reading.shape) + u", " +
                                         member(reading.shape->members.back().key, last) + u" }" + wide(reading.after);
            for (std::size_t i = 0; i <= whole.size(); ++i) {
                expectSame(reading, whole.substr(0, i), codes);
                expectSame(reading, whole.substr(0, i) + whole.substr(std::min(i + 1, whole.size())), codes);
                for (const char16_t unit : u"\"\\,:[]{}0-n x\n\xb\xe9\xfeff\xfffe\xd800\xdc00")
                    expectSame(reading, whole.substr(0, i) + unit + whole.substr(i), codes);
            }
            for (std::u16string marks : {u"\xfeff", u"\xfeff\xfeff", u"\xfeff\xfeff\xfeff", u"\xfeff\xfffe"}) {
                expectSame(reading, marks + whole, codes);
                std::u16string swapped = marks + whole;
                for (char16_t &unit : swapped)
                    unit = static_cast<char16_t>(unit >> 8 | unit << 8);
                expectSame(reading, swapped, codes);
            }
            expectSame(reading, u"[" + whole + u"]", codes);
            expectSame(reading, whole + whole, codes);
        }
        expectSame(reading, {}, codes);
    }
    codes.expectEnoughOfEach();
}

} // namespace oracle
