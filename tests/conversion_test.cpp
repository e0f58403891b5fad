#include "api/conversion.h"
#include "api/equality.h"
#include "controller/entities/event.h"
#include "controller/entities/site.h"

#include <gtest/gtest.h>

#include <functional>

namespace tarnelLib {

namespace {

using controller::Text;

/// A site with something in every nested record and list.
controller::Site fullSite()
{
    controller::Device device{.id = 3, .isParted = true};
    device.sections.push_back({.id = 1, .name = Text(u"hall")});
    device.sections.back().zones.push_back({.id = 4, .name = Text(u"door"), .delay = 30});
    device.deviceUsers.push_back({.id = 2, .name = Text(u"Ann"), .sections = {1, 2}});

    controller::Site site{.id = 9, .name = Text(u"shop"), .contractStatus = -1};
    site.location = controller::Location{.id = 9, .latitude = 59.4, .longitude = 24.7};
    site.domain = controller::Domain{.id = 5, .locale = controller::Locale{.id = 6}};
    site.contract = controller::Contract{.id = 7, .contractor = controller::Contractor{.id = 8}};
    site.devices.push_back(std::move(device));
    return site;
}

struct Structure {
    explicit Structure(controller::Site &&record) : site(api::toApiStruct(std::move(record))) {}
    Structure(const Structure &) = delete;
    Structure &operator=(const Structure &) = delete;
    ~Structure()
    {
        api::freeStructure<controller::Site>(*site);
        std::free(site);
    }

    api::Site *site;
};

} // namespace

TEST(Conversion, structuresAreEqualIfAllThatTheyHoldIs)
{
    const Structure full(fullSite());
    const std::function<void(controller::Site &)> differences[] = {
        [](auto &site) { site.id = 10; },
        [](auto &site) { site.name = Text(u"shops"); },
        [](auto &site) { site.contractStatus.reset(); },
        [](auto &site) { site.location->latitude = 59.5; },
        [](auto &site) { site.location.reset(); },
        [](auto &site) { site.domain->locale->iso = Text(u"et"); },
        [](auto &site) { site.contract->contractor.reset(); },
        [](auto &site) { site.devices.clear(); },
        [](auto &site) { site.devices[0].isParted = false; },
        [](auto &site) { site.devices[0].sections[0].zones[0].delay = 31; },
        [](auto &site) { site.devices[0].sections[0].zones.push_back({.id = 5}); },
        [](auto &site) { site.devices[0].deviceUsers[0].sections[1] = 3; },
    };
    EXPECT_TRUE(api::isEqual<controller::Site>(*full.site, *Structure(fullSite()).site));
    for (std::size_t i = 0; i < std::size(differences); ++i) {
        controller::Site other = fullSite();
        differences[i](other);
        EXPECT_FALSE(api::isEqual<controller::Site>(*full.site, *Structure(std::move(other)).site)) << i;
    }
}

TEST(Conversion, anAbsentTextEqualsAnEmptyOneAndAnAbsentNumberIsNoZero)
{
    const Structure bare({.id = 1});
    EXPECT_TRUE(api::isEqual<controller::Site>(*bare.site, *Structure({.id = 1, .name = Text(u"")}).site));
    EXPECT_FALSE(api::isEqual<controller::Site>(*bare.site, *Structure({.id = 1, .type = 0}).site));
}

} // namespace tarnelLib
