// Searches for a text that the reader of requests and Qt's JSON parser take differently.
//
// The first byte of an input chooses the function and the kind, the others are the text.

#include "generator.h"

#include <cstdlib>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t maximum);

namespace {

using fuzz::Reading;

const std::vector<Reading> &readings()
{
    static const std::vector<Reading> all = oracle::readings();
    return all;
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maximum,
                                               unsigned int seed)
{
    fuzz::Generator generator(seed);
    std::string input(data, data + size);
    if (generator.oneIn(4) || size < 2) {
        const std::size_t chosen = generator.below(readings().size());
        using enum fuzz::Generator::Manner;
        input = static_cast<char>(chosen) + generator.request(readings()[chosen], generator.oneIn(4) ? Right : Odd);
    } else if (generator.oneIn(2)) {
        return LLVMFuzzerMutate(data, size, maximum);
    } else {
        generator.damage(input, 1);
    }
    input.resize(std::min(input.size(), maximum));
    std::ranges::copy(input, data);
    return input.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const Reading &reading = readings()[data[0] % readings().size()];
    const std::vector<char16_t> text = fuzz::unitsOf({reinterpret_cast<const char *>(data) + 1, size - 1});
    const oracle::Comparison comparison = reading.compare({text.data(), text.size()});
    if (comparison.isSame)
        return 0;
    std::fprintf(stderr, "%s: expected %u %s\nactual %u %s\n", reading.name.c_str(),
                 static_cast<unsigned int>(comparison.expected), comparison.expectedRecords.c_str(),
                 static_cast<unsigned int>(comparison.actual), comparison.actualRecords.c_str());
    std::fwrite(data + 1, 1, size - 1, stderr);
    std::abort();
}
