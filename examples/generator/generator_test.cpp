#include "generator/centre.h"

#include <gtest/gtest.h>

namespace {

using namespace generator;

/// A number that stands for all requests of a kind.
template <class Record>
std::uint64_t fingerprint(const Centre &centre)
{
    std::uint64_t hash = 0;
    centre.forEachAddRequest<Record>(100, [&](const std::u16string &request) {
        for (const char16_t unit : request)
            hash = hash * 31 + unit;
    });
    return hash;
}

// Benchmarks and failing seeds are only worth something while the data behind them stays the same, with any compiler.
TEST(GeneratorTest, makesTheSameDataFromASeedForever)
{
    const Centre centre(1, {.sites = 200, .events = 5000});
    EXPECT_EQ(fingerprint<Locale>(centre), 10343360666661885113U);
    EXPECT_EQ(fingerprint<Domain>(centre), 2236600349898411551U);
    EXPECT_EQ(fingerprint<User>(centre), 10972594663574013113U);
    EXPECT_EQ(fingerprint<Organization>(centre), 14564893693066825936U);
    EXPECT_EQ(fingerprint<Contractor>(centre), 13739840142605656184U);
    EXPECT_EQ(fingerprint<Contract>(centre), 10697748996243651936U);
    EXPECT_EQ(fingerprint<Site>(centre), 14589182586077572277U);
    EXPECT_EQ(fingerprint<Event>(centre), 16780043392151469933U);
    EXPECT_NE(fingerprint<Site>(Centre(2, {.sites = 200})), fingerprint<Site>(centre));
}

TEST(GeneratorTest, findsTheSiteOfEachDevice)
{
    std::uint32_t device = 0;
    for (std::uint32_t site = 0; site < 50; ++site) {
        ASSERT_EQ(Centre::firstDeviceOfSite(site), device);
        for (std::uint32_t i = 0; i < Centre::deviceCountOfSite(site); ++i)
            ASSERT_EQ(Centre::siteOfDevice(device++), site);
    }
}

TEST(GeneratorTest, keepsTheOrderOfTimeAcrossTheMonthAndBeyond)
{
    const Centre centre(1, {.events = 5000});
    std::uint32_t last = Centre::historyStart;
    for (std::uint32_t i = 0; i < 6000; ++i) {
        const std::uint32_t time = *centre.make<Event>(i).time;
        ASSERT_GE(time, last);
        ASSERT_EQ(time < Centre::historyStart + Centre::historySeconds, i < 5000);
        last = time;
    }
}

TEST(GeneratorTest, writesTextsThatJsonMustEscape)
{
    Contract contract;
    contract.id = 7;
    contract.extra = u"\"a\\b\"\n\u00e4";
    EXPECT_EQ(recordRequest(contract), u"{\"D\":{\"id\":7,\"extra\":\"\\\"a\\\\b\\\"\\u000a\u00e4\"}}");
}

} // namespace
