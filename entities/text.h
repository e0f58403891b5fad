#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace tarnelLib::controller {

/// A UTF-16 text in one `malloc`'d, zero-terminated block.
///
/// The block is the very string that a client gets: a text read from the file is copied once, out of SQLite's buffer,
/// and then only changes hands. Out of memory is `std::bad_alloc`.
class Text
{
public:
    explicit Text(std::u16string_view units);
    /// The text of UTF-8 bytes; nothing unless all of them are well-formed characters of one UTF-16 unit each.
    [[nodiscard]] static std::optional<Text> fromUtf8(std::string_view bytes);
    Text(const Text &other) : Text(other.view()) {}
    Text(Text &&other) noexcept
        : m_units(std::exchange(other.m_units, nullptr)), m_length(std::exchange(other.m_length, 0))
    {
    }
    Text &operator=(Text other) noexcept
    {
        std::swap(m_units, other.m_units);
        std::swap(m_length, other.m_length);
        return *this;
    }
    ~Text();

    [[nodiscard]] std::u16string_view view() const { return {m_units, m_length}; }

    /// Gives the block away, to be released with `free`.
    [[nodiscard]] unsigned short *release() &&
    {
        m_length = 0;
        return reinterpret_cast<unsigned short *>(std::exchange(m_units, nullptr));
    }

private:
    /// A text of `length` units, which are yet to be written.
    explicit Text(std::size_t length);

    char16_t *m_units;
    std::size_t m_length;
};

} // namespace tarnelLib::controller
