#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string_view>
#include <type_traits>

/// Values in requests that are stored as they are promised to be, and almost surely not as they are meant.
namespace tarnelLib::diagnostics {

/// How a value of a request was read.
enum class Reading : unsigned char {
    Fine,
    TrueForFlag, ///< The JSON value true, which is stored as false.
    Cut,         ///< A number that is not stored as it stands there.
    Wrong,       ///< A value of another type: the request is refused, unless it is one to delete.
    UnknownKey,  ///< The value of a key that the record does not have.
};

/// A sort of mistake for a key of a kind, as a number that is not 0.
template <class Unit>
std::uint64_t mistake(std::string_view kind, std::basic_string_view<Unit> key, Reading reading)
{
    constexpr std::uint64_t prime = 0x100000001b3;
    std::uint64_t hash = 0xcbf29ce484222325 + static_cast<std::uint64_t>(reading);
    for (const char unit : kind)
        hash = (hash ^ static_cast<unsigned char>(unit)) * prime;
    for (const Unit unit : key)
        hash = (hash ^ static_cast<std::make_unsigned_t<Unit>>(unit)) * prime;
    return hash | 1U;
}

/// Which mistakes were told since the launch, and how many there were. Clients choose the keys, so that there is room
/// for so many only: what comes beyond is counted, and not told.
class Suspicions
{
public:
    void forget()
    {
        m_count = 0;
        for (auto &place : m_told)
            place = 0;
    }

    void count(unsigned int number) { m_count += number; }
    [[nodiscard]] unsigned int count() const { return m_count; }

    [[nodiscard]] bool isNew(std::uint64_t mistake) const
    {
        for (std::size_t i = 0; i < probes; ++i) {
            const std::uint64_t told = m_told[(mistake / 2 + i) % m_told.size()];
            if (told == 0 || told == mistake)
                return told == 0;
        }
        return false;
    }

    /// True for the one caller that is to tell it.
    [[nodiscard]] bool tell(std::uint64_t mistake)
    {
        for (std::size_t i = 0; i < probes; ++i) {
            std::uint64_t told = 0;
            if (m_told[(mistake / 2 + i) % m_told.size()].compare_exchange_strong(told, mistake))
                return true;
            if (told == mistake)
                return false;
        }
        return false;
    }

private:
    static constexpr std::size_t probes = 16;

    std::atomic<unsigned int> m_count = 0;
    std::array<std::atomic<std::uint64_t>, 1024> m_told{};
};

inline constinit Suspicions suspicions;

/// What looks like a mistake in one request.
struct Oddities {
    unsigned int count = 0;
    bool areSomeNew = false;

    template <class Unit>
    void add(std::string_view kind, std::basic_string_view<Unit> key, Reading reading)
    {
        ++count;
        areSomeNew = areSomeNew || suspicions.isNew(mistake(kind, key, reading));
    }
};

} // namespace tarnelLib::diagnostics
