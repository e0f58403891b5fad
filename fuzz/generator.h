#pragma once

#include "oracle/comparison.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// Texts for the library, made up or changed.
///
/// In an input each byte is a code unit: ASCII as itself, the rest by a table of units that are special to JSON, UTF-8
/// or UTF-16. So the inputs can be read and edited, and the dictionary is plain text.
namespace fuzz {

using oracle::Reading;
using oracle::Shape;

inline constexpr std::array<char16_t, 20> specialUnits = {0x00,   0x80,   0x85,   0xa0,   0xe9,   0xff,   0x7ff,
                                                          0x800,  0x20ac, 0x2028, 0xd7ff, 0xd800, 0xd834, 0xdbff,
                                                          0xdc00, 0xdd1e, 0xdfff, 0xfeff, 0xfffe, 0xffff};
// clang-format off
inline constexpr std::array<std::string_view, 48> tokens = {
    "{", "}", "[", "]", ",", ":", "\"", "\\", "null", "true", "false", "nul", "0", "-0", "-1", "1.5", "-2.5", "300",
    "1.", ".5", "01", "-", "1e400", "1e-400", "1e2", "0e400", "\"D\":", "{}", "[]", "\"\"", "\"a\"", "1 ",
    "\"\\u0000\"", "\\ud83", "\\ud834", "\\udd1e", "\\x", "\\u", "\\\"", "\"D\"", "\n", "\x91", "\x80", "\"\x91\"",
    "\x8b", "\x8f", "9007199254740993", "18446744073709551615"};
// clang-format on

/// The code units that the bytes of an input stand for, without a terminator, so that reading too far is seen.
inline std::vector<char16_t> unitsOf(std::string_view bytes)
{
    std::vector<char16_t> units(bytes.size());
    std::ranges::transform(bytes, units.begin(), [](char byte) -> char16_t {
        const auto value = static_cast<unsigned char>(byte);
        return value < 0x80 ? value : specialUnits.at((value - 0x80U) % specialUnits.size());
    });
    return units;
}

/// Writes requests and filters as the library wants them, or nearly.
class Generator
{
public:
    explicit Generator(unsigned int seed) : m_random(seed) {}

    /// Whether what is written may depart from what the library accepts.
    enum class Manner { Right, Odd };

    std::string request(const Reading &reading, Manner manner)
    {
        m_isOdd = manner == Manner::Odd;
        m_text = reading.before;
        m_sparsity = 1 + below(8);
        object(*reading.shape, 3);
        while (oneIn(4) && (m_isOdd || reading.after.starts_with(']'))) {
            m_text.push_back(',');
            object(*reading.shape, 3);
        }
        m_text.append(reading.after);
        for (std::size_t damages = m_isOdd ? below(4) : 0; damages > 0; --damages)
            damage(m_text);
        return m_text;
    }

    /// A field's key, for the most part.
    std::string filterField(const Shape &shape)
    {
        m_text = shape.members[below(shape.members.size())].key;
        if (oneIn(8))
            damage(m_text);
        return m_text;
    }

    /// A number or a text, not in quotes.
    std::string filterValue()
    {
        m_isOdd = true;
        m_text.clear();
        if (oneIn(2))
            number();
        else
            units();
        return m_text;
    }

    /// An identifier, of so few that records often meet; or any number.
    std::string identifier() { return std::to_string(oneIn(8) ? m_random() : below(2)); }

    /// Changes a text in one place, at `begin` or behind.
    void damage(std::string &text, std::size_t begin = 0)
    {
        const std::size_t places = text.size() - begin + 1;
        const std::size_t position = begin + below(places);
        const std::size_t length = std::min(1 + below(oneIn(4) ? 40 : 4), text.size() - position);
        const std::size_t target = begin + below(places);
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

    std::size_t below(std::size_t end) { return m_random() % end; }
    bool oneIn(std::size_t chances) { return below(chances) == 0; }

private:
    void object(const Shape &shape, int depth)
    {
        m_text.push_back('{');
        for (std::size_t i = 0; i < shape.members.size(); ++i) {
            const Shape::Member &own = shape.members[i];
            if (own.isRequired ? !m_isOdd || !oneIn(40) : oneIn(m_sparsity))
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
        const Shape::Type type = m_isOdd && oneIn(20) ? static_cast<Shape::Type>(below(6)) : member.type;
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
        } else if (member.isRequired && !oneIn(4)) {
            m_text.append(identifier());
        } else {
            number();
        }
        m_text.push_back(',');
    }

    void number()
    {
        if (!oneIn(4)) {
            m_text.append(oneIn(4) ? std::to_string(below(1000)) : identifier());
            return;
        }
        if (!m_isOdd) {
            m_text.append(std::to_string(std::uint64_t{3} * m_random())); // Some are beyond 32 bits.
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
        units();
        m_text.push_back('"');
    }

    void units()
    {
        for (std::size_t count = below(6); count > 0; --count) {
            const std::size_t choice = below(6);
            if (choice < 2)
                m_text.push_back(static_cast<char>(0x80 + below(specialUnits.size())));
            else if (choice == 2)
                m_text.append("\\").push_back("bfnrt\"\\/x0u"[below(m_isOdd ? 11 : 8)]);
            else if (choice == 3 && m_isOdd)
                m_text.append("\\u").append(oneIn(2) ? "d8" : "0").append("34").append(oneIn(2) ? "" : "1");
            else
                m_text.push_back(static_cast<char>('a' + below(26)));
        }
    }

    std::minstd_rand m_random;
    std::string m_text;
    bool m_isOdd = true;
    std::size_t m_sparsity = 1; ///< Of how many fields that may be left out one is there.
};

} // namespace fuzz
