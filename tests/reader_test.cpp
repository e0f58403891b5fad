#include "client.h"
#include "oracle/comparison.h"

#include <gtest/gtest.h>

#include <QString>

#include <cstdint>
#include <functional>
#include <sstream>

// The search for texts that the library reads otherwise than Qt does, from made-up texts here.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maximum,
                                               unsigned int seed);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *, std::size_t size, std::size_t)
{
    return size;
}

namespace oracle {

namespace {

std::u16string wide(std::string_view ascii)
{
    return {ascii.begin(), ascii.end()};
}

std::u16string repeated(std::string_view part, std::size_t count)
{
    std::u16string text;
    for (std::size_t i = 0; i < count; ++i)
        text += wide(part);
    return text;
}

void expectSame(const Reading &reading, const std::u16string &text)
{
    const Comparison read = reading.compare(text);
    EXPECT_TRUE(read.isSame) << reading.name << ": " << std::string(text.begin(), text.end()) << "\nexpected "
                             << static_cast<unsigned int>(read.expected) << ' ' << read.expectedRecords << "\nactual "
                             << static_cast<unsigned int>(read.actual) << ' ' << read.actualRecords;
}

/// Calls `visit` with each field of every level, and with an unknown one: the text up to its value, and that behind.
void forEachField(const Shape &shape, const std::u16string &before, const std::u16string &after,
                  const std::function<void(const std::u16string &, const std::u16string &)> &visit)
{
    std::u16string start = before + u"{\"\":0,";
    for (const Shape::Member &field : shape.members)
        start += field.isRequired ? wide("\"" + std::string(field.key) + "\":7,") : u"";
    const std::u16string end = u"}" + after;
    visit(start + u"\"unknown\":", end);
    for (const Shape::Member &field : shape.members) {
        const std::u16string key = start + wide("\"" + std::string(field.key) + "\":");
        visit(key, end);
        if (field.type == Shape::Type::Objects)
            forEachField(*field.object, key + u"[", u"]" + end, visit);
        else if (field.type == Shape::Type::Object)
            forEachField(*field.object, key, end, visit);
    }
}

/// Values of every type, and what is nearly one.
std::vector<std::u16string> values()
{
    std::vector<std::u16string> list{u"\n7", u"\"a\nb\""};
    std::istringstream lines(client::readData("values.txt"));
    for (std::string line; std::getline(lines, line);)
        list.push_back(QString::fromStdString(line).toStdU16String());
    for (const std::size_t length : {31U, 32U, 33U, 300U, 400U}) {
        list.push_back(repeated("9", length));
        list.push_back(u"0." + repeated("0", length) + u"1");
        list.push_back(repeated("9", length) + u"e-" + wide(std::to_string(length)));
    }
    for (std::size_t depth = 1015; depth <= 1025; ++depth) {
        list.push_back(repeated("[", depth) + repeated("]", depth));
        list.push_back(repeated(R"({"":)", depth) + u"1" + repeated("}", depth));
    }
    return list;
}

} // namespace

TEST(Reader, readsEveryValueOfEveryFieldAsQtDoes)
{
    const std::vector<std::u16string> all = values();
    for (const Reading &reading : readings()) {
        const auto tryValues = [&](const std::u16string &before, const std::u16string &after) {
            for (const std::u16string &value : all)
                expectSame(reading, before + value + after);
            for (std::u16string text : {u"\xfeff", u"\xfeff\xfeff", u"\xfeff\xfeff\xfeff"}) {
                text += before + u"1" + after;
                expectSame(reading, text);
                for (char16_t &unit : text)
                    unit = static_cast<char16_t>(unit >> 8 | unit << 8);
                expectSame(reading, text);
            }
        };
        forEachField(*reading.shape, wide(reading.before), wide(reading.after), tryValues);
    }
}

TEST(Reader, readsMadeUpTextsAsQtDoes)
{
    std::vector<std::uint8_t> text(4000);
    for (unsigned int seed = 1; seed <= 300000; ++seed)
        LLVMFuzzerTestOneInput(text.data(), LLVMFuzzerCustomMutator(text.data(), 0, text.size(), seed));
}

} // namespace oracle
