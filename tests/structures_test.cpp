#include "api/equality.h"
#include "entities/site.h"
#include "entities/structures.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace tarnelLib {

namespace {

using controller::allocate;
using controller::append;
using Sites = controller::Structures<controller::Site>;

unsigned short *text(std::u16string_view units)
{
    return controller::Text(units).release();
}

void fill(Sites &sites)
{
    api::Site &site = sites.append();
    site.id = 9;
    site.name = text(u"shop");
    api::Device &device = append(site.devices, site.devicesCount);
    api::Section &section = append(device.sections, device.sectionsCount);
    append(section.zones, section.zonesCount).delay = allocate(30U);
    api::DeviceUser &user = append(device.deviceUsers, device.deviceUsersCount);
    append(user.sections, user.sectionsCount) = 1;
    append(user.sections, user.sectionsCount) = 2;
    site.location = allocate(api::Location{.id = 9});
    site.location->latitude = allocate(59.4);
}

} // namespace

TEST(Structures, areEqualIfAllThatTheyHoldIs)
{
    using api::Site;
    const std::pair<std::function<void(Site &)>, bool> changes[] = {
        {[](Site &) {}, true},
        {[](Site &site) { site.comment = text(u""); }, true},
        {[](Site &site) { site.id = 10; }, false},
        {[](Site &site) { *site.name = u'x'; }, false},
        {[](Site &site) { site.type = allocate(0U); }, false},
        {[](Site &site) { *site.location->latitude = 59.5; }, false},
        {[](Site &site) { std::free(std::exchange(site.location->latitude, nullptr)); }, false},
        {[](Site &site) { append(site.devices, site.devicesCount); }, false},
        {[](Site &site) { *site.devices[0].sections[0].zones[0].delay = 31; }, false},
        {[](Site &site) { append(site.devices[0].sections[0].zones, site.devices[0].sections[0].zonesCount); }, false},
        {[](Site &site) { site.devices[0].deviceUsers[0].sections[1] = 3; }, false},
    };
    for (std::size_t i = 0; i < std::size(changes); ++i) {
        Sites sites;
        Sites changed;
        fill(sites);
        fill(changed);
        changes[i].first(changed.all()[0]);
        EXPECT_EQ(api::isEqual<controller::Site>(sites.all()[0], changed.all()[0]), changes[i].second) << i;
    }
}

} // namespace tarnelLib
