#include "api/conversion.h"
#include "api/equality.h"
#include "entities/site.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace tarnelLib {

namespace {

using controller::Site;
using controller::Text;

auto structureOf(Site &&record)
{
    const auto release = [](api::Site *site) {
        api::freeStructure<Site>(*site);
        std::free(site);
    };
    return std::unique_ptr<api::Site, decltype(release)>(api::toApiStruct(std::move(record)), release);
}

} // namespace

TEST(Conversion, structuresAreEqualIfAllThatTheyHoldIs)
{
    const auto makeSite = [] {
        controller::Device device{.id = 3};
        device.sections.push_back({.id = 1, .zones = {{.id = 4, .delay = 30}}});
        device.deviceUsers.push_back({.id = 2, .name = Text(u"Ann"), .sections = {1, 2}});
        return Site{.id = 9, .name = Text(u"shop"), .devices = {device}, .location = {{.id = 9, .latitude = 59.4}}};
    };
    const std::pair<std::function<void(Site &)>, bool> changes[] = {
        {[](Site &) {}, true},
        {[](Site &site) { site.comment = Text(u""); }, true},
        {[](Site &site) { site.id = 10; }, false},
        {[](Site &site) { site.name = Text(u"shops"); }, false},
        {[](Site &site) { site.type = 0; }, false},
        {[](Site &site) { site.location->latitude = 59.5; }, false},
        {[](Site &site) { site.location.reset(); }, false},
        {[](Site &site) { site.devices.clear(); }, false},
        {[](Site &site) { site.devices[0].sections[0].zones[0].delay = 31; }, false},
        {[](Site &site) { site.devices[0].sections[0].zones.push_back({.id = 5}); }, false},
        {[](Site &site) { site.devices[0].deviceUsers[0].sections[1] = 3; }, false},
    };
    for (std::size_t i = 0; i < std::size(changes); ++i) {
        Site changed = makeSite();
        changes[i].first(changed);
        EXPECT_EQ(api::isEqual<Site>(*structureOf(makeSite()), *structureOf(std::move(changed))), changes[i].second)
            << i;
    }
}

} // namespace tarnelLib
