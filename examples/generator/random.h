#pragma once

#include <cstdint>
#include <initializer_list>

namespace generator {

/// A stream of numbers that is the same with every compiler, library and machine, as long as no expression takes two
/// of them: in which order would be the compiler's choice.
class Random
{
public:
    /// Streams made from different parts are independent of each other.
    explicit Random(std::initializer_list<std::uint64_t> parts)
    {
        for (const std::uint64_t part : parts) {
            m_state ^= part;
            m_state = next();
        }
    }

    std::uint64_t next()
    {
        m_state += 0x9e3779b97f4a7c15U;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
        return mixed ^ (mixed >> 31U);
    }

    /// A number from 0 up to, but not including, `end`.
    std::uint32_t below(std::uint32_t end) { return static_cast<std::uint32_t>(((next() >> 32U) * end) >> 32U); }

    /// A number from `first` to `last`, both included.
    std::uint32_t between(std::uint32_t first, std::uint32_t last) { return first + below(last - first + 1); }

    /// True in `percent` of 100 cases.
    bool chance(std::uint32_t percent) { return below(100) < percent; }

    /// One of the elements of an array.
    template <class Array>
    const auto &pick(const Array &array)
    {
        return array[below(static_cast<std::uint32_t>(array.size()))];
    }

private:
    std::uint64_t m_state = 0;
};

} // namespace generator
