#pragma once

#include <tarnel/tarnel.h>

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <vector>

namespace bench {

namespace api = tarnelLib::api;

/// What calls have handed out: kept while the clock runs, and compared and released when it has stopped.
class Answers
{
public:
    Answers() = default;
    Answers(const Answers &) = delete;
    Answers &operator=(const Answers &) = delete;
    ~Answers();

    template <class Api>
    void keep(Api *first, unsigned int count)
    {
        std::get<Blocks<Api>>(m_blocks).push_back({first, count});
    }

    /// How many records there are.
    [[nodiscard]] std::size_t count() const;
    /// A number that follows from every member of every record, in their order.
    [[nodiscard]] std::uint64_t digest() const;

private:
    /// A `malloc`'d block of structures.
    template <class Api>
    struct Block {
        Api *first;
        unsigned int count;
    };

    template <class Api>
    using Blocks = std::vector<Block<Api>>;

    /// Calls `visit` with each block of each kind.
    template <class Visit>
    void forEachBlock(Visit visit) const
    {
        const auto visitAll = [&](const auto &blocks) { std::for_each(blocks.begin(), blocks.end(), visit); };
        std::apply([&](const auto &...blocks) { (visitAll(blocks), ...); }, m_blocks);
    }

    std::tuple<Blocks<api::Event>, Blocks<api::Device>, Blocks<api::User>, Blocks<api::Site>, Blocks<api::Locale>>
        m_blocks;
};

} // namespace bench
