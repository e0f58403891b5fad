// Searches for a text that the reader of requests and Qt's JSON parser take differently.
//
// The first byte of an input chooses the function and the kind, each other byte is a code unit: ASCII as itself, the
// rest by a table of units that are special to JSON, UTF-8 or UTF-16. So the inputs can be read and edited, and the
// dictionary is plain text.

#include "oracle/comparison.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t maximum);

namespace {

using oracle::Reading;
using oracle::Shape;

constexpr std::array<char16_t, 20> specialUnits = {0x00,   0x80,   0x85,   0xa0,   0xe9,   0xff,   0x7ff,
                                                   0x800,  0x20ac, 0x2028, 0xd7ff, 0xd800, 0xd834, 0xdbff,
                                                   0xdc00, 0xdd1e, 0xdfff, 0xfeff, 0xfffe, 0xffff};
constexpr std::array<std::string_view, 48> tokens = {"{",
                                                     "}",
                                                     "[",
                                                     "]",
                                                     ",",
                                                     ":",
                                                     "\"",
                                                     "\\",
                                                     "null",
                                                     "true",
                                                     "false",
                                                     "nul",
                                                     "0",
                                                     "-0",
                                                     "-1",
                                                     "1.5",
                                                     "-2.5",
                                                     "300",
                                                     "1.",
                                                     ".5",
                                                     "01",
                                                     "-",
                                                     "1e400",
                                                     "1e-400",
                                                     "1e2",
                                                     "0e400",
                                                     "\"D\":",
                                                     "{}",
                                                     "[]",
                                                     "\"\"",
                                                     "\"a\"",
                                                     "1 ",
                                                     "\"\\u0000\"",
                                                     "\\ud83",
                                                     "\\ud834",
                                                     "\\udd1e",
                                                     "\\x",
                                                     "\\u",
                                                     "\\\"",
                                                     "\"D\"",
                                                     "\n",
                                                     "\x91",
                                                     "\x80",
                                                     "\"\x91\"",
                                                     "\x8b",
                                                     "\x8f",
                                                     "9007199254740993",
                                                     "18446744073709551615"};

/// Writes a request as the parser wants it, or nearly.
class Generator
{
public:
    explicit Generator(unsigned int seed) : m_random(seed) {}

    std::string request(const std::vector<Reading> &all)
    {
        const std::size_t chosen = below(all.size());
        m_text.assign(1, static_cast<char>(chosen));
        m_text.append(all[chosen].before);
        object(*all[chosen].shape, 3);
        if (oneIn(8)) {
            m_text.push_back(',');
            object(*all[chosen].shape, 3);
        }
        m_text.append(all[chosen].after);
        for (std::size_t damages = oneIn(3) ? 0 : below(4); damages > 0; --damages)
            damage(m_text);
        return m_text;
    }

    /// Changes a text in one place, behind its first byte.
    void damage(std::string &text)
    {
        const std::size_t position = 1 + below(text.size());
        const std::size_t length = std::min(1 + below(oneIn(4) ? 40 : 4), text.size() - position);
        const std::size_t target = 1 + below(text.size());
        switch (below(5)) {
        case 0:
            text.erase(position, length);
            break;
        case 1:
            text.insert(target, std::string(text, position, length));
            break;
        case 2:
            text.insert(position, tokens.at(below(tokens.size())));
            break;
        case 3:
            text.replace(position, length, tokens.at(below(tokens.size())));
            break;
        default:
            text.replace(position, std::min<std::size_t>(length, 1), 1, static_cast<char>(below(256)));
            break;
        }
    }

    bool oneIn(std::size_t chances) { return below(chances) == 0; }

private:
    std::size_t below(std::size_t end) { return m_random() % end; }

    void object(const Shape &shape, int depth)
    {
        m_text.push_back('{');
        for (std::size_t i = 0; i < shape.members.size(); ++i) {
            const Shape::Member &own = shape.members[i];
            if (own.isRequired ? !oneIn(40) : oneIn(4))
                member(own, depth);
            if (oneIn(12))
                member(shape.members[below(shape.members.size())], depth); // Perhaps again, or out of turn.
        }
        if (m_text.back() == ',')
            m_text.pop_back();
        m_text.push_back('}');
    }

    void member(const Shape::Member &member, int depth)
    {
        m_text.push_back('"');
        if (oneIn(12)) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned int>(member.key.front()));
            m_text.append(escape.data()).append(member.key.substr(1));
        } else {
            m_text.append(member.key);
        }
        m_text.append("\":");
        const Shape::Type type = oneIn(20) ? static_cast<Shape::Type>(below(6)) : member.type;
        const bool hasObject = member.object != nullptr && depth > 0;
        if (type == Shape::Type::Object && hasObject) {
            object(*member.object, depth - 1);
        } else if (type == Shape::Type::Object) {
            m_text.append("{}");
        } else if (type == Shape::Type::Objects || type == Shape::Type::Numbers) {
            m_text.push_back('[');
            for (std::size_t items = below(3); items > 0; --items) {
                if (type == Shape::Type::Objects && hasObject)
                    object(*member.object, depth - 1);
                else
                    number();
                m_text.push_back(',');
            }
            if (m_text.back() == ',')
                m_text.pop_back();
            m_text.push_back(']');
        } else if (type == Shape::Type::Text) {
            string();
        } else if (type == Shape::Type::Boolean && oneIn(2)) {
            m_text.append(oneIn(2) ? "true" : "false");
        } else {
            number();
        }
        m_text.push_back(',');
    }

    void number()
    {
        if (oneIn(2)) {
            m_text.append(std::to_string(below(1000)));
            return;
        }
        m_text.append(oneIn(3) ? "-" : "");
        digits();
        if (oneIn(2))
            digits();
        if (oneIn(3)) {
            m_text.push_back('.');
            digits();
        }
        if (oneIn(4)) {
            m_text.append(oneIn(2) ? "e" : "E").append(oneIn(3) ? "-" : oneIn(3) ? "+" : "");
            m_text.append(std::to_string(below(oneIn(3) ? 420 : 30)));
        }
    }

    void digits() { m_text.append(std::to_string(oneIn(2) ? m_random() : below(10))); }

    void string()
    {
        m_text.push_back('"');
        for (std::size_t units = below(6); units > 0; --units) {
            const std::size_t choice = below(6);
            if (choice == 0)
                m_text.push_back(static_cast<char>(0x80 + below(specialUnits.size())));
            else if (choice == 1)
                m_text.append("\\").push_back("bfnrt\"\\/x0u"[below(11)]);
            else if (choice == 2)
                m_text.append("\\u").append(oneIn(2) ? "d8" : "0").append("34").append(oneIn(2) ? "" : "1");
            else
                m_text.push_back(static_cast<char>('a' + below(26)));
        }
        m_text.push_back('"');
    }

    std::minstd_rand m_random;
    std::string m_text;
};

const std::vector<Reading> &readings()
{
    static const std::vector<Reading> all = oracle::readings();
    return all;
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maximum,
                                               unsigned int seed)
{
    Generator generator(seed);
    if (!generator.oneIn(4) && size > 1) {
        if (generator.oneIn(2))
            return LLVMFuzzerMutate(data, size, maximum);
        std::string text(data, data + size);
        generator.damage(text);
        text.resize(std::min(text.size(), maximum));
        std::ranges::copy(text, data);
        return text.size();
    }
    std::string text = generator.request(readings());
    text.resize(std::min(text.size(), maximum));
    std::ranges::copy(text, data);
    return text.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const Reading &reading = readings()[data[0] % readings().size()];
    std::vector<char16_t> text(size - 1); // No terminator, so that reading too far is seen.
    std::transform(data + 1, data + size, text.begin(), [](std::uint8_t byte) -> char16_t {
        return byte < 0x80 ? byte : specialUnits.at((byte - 0x80U) % specialUnits.size());
    });
    const oracle::Comparison comparison = reading.compare({text.data(), text.size()});
    if (comparison.isSame)
        return 0;
    std::fprintf(stderr, "%s: expected %u %s\nactual %u %s\n", reading.name.c_str(),
                 static_cast<unsigned int>(comparison.expected), comparison.expectedRecords.c_str(),
                 static_cast<unsigned int>(comparison.actual), comparison.actualRecords.c_str());
    std::fwrite(data + 1, 1, size - 1, stderr);
    std::abort();
}
