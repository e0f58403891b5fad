#include "generator/wording.h"

namespace generator {

namespace {

std::u16string filled(u16string_view pattern, const Language &language, u16string_view city, Random &random)
{
    std::u16string text;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != u'$') {
            text.push_back(pattern[i]);
            continue;
        }
        switch (pattern[++i]) {
        case u'f':
            text += random.pick(language.familyNames);
            break;
        case u'g':
            text += random.pick(language.givenNames);
            break;
        case u's':
            text += random.pick(language.streets);
            break;
        case u'n':
            text += decimal(random.between(1, 98));
            break;
        default:
            text += city;
        }
    }
    return text;
}

} // namespace

std::u16string decimal(std::uint64_t number)
{
    std::u16string text;
    do {
        text.insert(text.begin(), static_cast<char16_t>(u'0' + number % 10));
        number /= 10;
    } while (number != 0);
    return text;
}

std::u16string digits(Random &random, int count)
{
    std::u16string text;
    for (int i = 0; i < count; ++i)
        text.push_back(static_cast<char16_t>(u'0' + random.below(10)));
    return text;
}

std::u16string worded(u16string_view pattern, const Language &language, Random &random)
{
    return filled(pattern, language, {}, random);
}

std::u16string personName(const Language &language, Random &random)
{
    return filled(language.personPattern, language, {}, random);
}

std::u16string address(const Language &language, const City &city, Random &random)
{
    return filled(language.addressPattern, language, city.name, random);
}

std::u16string phoneNumber(const Language &language, Random &random)
{
    return std::u16string(language.phonePrefix) + digits(random, 4);
}

} // namespace generator
