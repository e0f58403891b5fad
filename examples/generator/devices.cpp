#include "generator/centre.h"
#include "generator/languages.h"
#include "generator/wording.h"

/// The devices with what is programmed into them.
namespace generator {

Centre::DeviceShape Centre::shapeOfDevice(std::uint32_t device) const
{
    Random random = this->random<Device>(device, 1);
    const std::uint32_t sections = random.between(1, 5);
    return {sections, random.between(2, 8)};
}

template <>
Device Centre::make(std::uint32_t index) const
{
    Random random = this->random<Device>(index);
    const std::uint32_t site = siteOfDevice(index);
    const DeviceShape shape = shapeOfDevice(index);
    Device device;
    device.id = Device::firstId + index;
    device.account = 1000 + index;
    device.configVersion = random.between(100, 140);
    for (std::uint32_t section = 1; section <= shape.sections; ++section)
        device.sections.push_back(makeSection(index, section));
    const std::uint32_t users = random.between(1, 5);
    for (std::uint32_t user = 1; user <= users; ++user)
        device.deviceUsers.push_back(makeDeviceUser(index, user));
    device.isParted = shape.sections > 1;
    if (random.chance(10))
        device.clusterId = random.between(1, 9);
    if (site % 40 != 39)
        device.domainId = Domain::firstId + domainOfSite(site);
    return device;
}

Section Centre::makeSection(std::uint32_t device, std::uint32_t section) const
{
    Random random = this->random<Device>(device, 0x1000 + section);
    const DeviceShape shape = shapeOfDevice(device);
    const Language &language = languageOfDomain(domainOfSite(siteOfDevice(device)));
    Section made;
    made.id = section;
    made.name = language.sections[(section - 1) % language.sections.size()];
    if (random.chance(40))
        made.scheduleId = random.between(1, 12);
    for (std::uint32_t zone = 1; zone <= shape.zonesPerSection; ++zone)
        made.zones.push_back(makeZone(device, (section - 1) * shape.zonesPerSection + zone));
    made.tracert = random.below(2);
    made.flags = random.below(16);
    if (random.chance(20))
        made.detector = random.between(1, detectorCount);
    made.arm = random.below(2);
    if (random.chance(30)) {
        made.physic = random.below(4);
        made.form = random.below(4);
    }
    made.delay = random.below(4) * 15;
    if (random.chance(15))
        made.uidType = random.below(3);
    return made;
}

Zone Centre::makeZone(std::uint32_t device, std::uint32_t zone) const
{
    Random random = this->random<Device>(device, 0x2000 + zone);
    const Language &language = languageOfDomain(domainOfSite(siteOfDevice(device)));
    const std::uint32_t detector = (zone - 1) % detectorCount + 1;
    Zone made;
    made.id = zone;
    made.name = language.zones[detector - 1];
    if (zone > detectorCount)
        *made.name += u" " + decimal((zone - 1) / detectorCount + 1);
    made.detector = detector;
    made.physic = random.below(4);
    if (random.chance(30))
        made.form = random.below(4);
    made.flags = random.below(256);
    made.delay = detector == static_cast<std::uint32_t>(Detector::FrontDoor) ? random.between(1, 3) * 15 : 0;
    if (random.chance(10))
        made.scheduleId = random.between(1, 12);
    if (random.chance(20))
        made.tracert = random.below(2);
    if (random.chance(15))
        made.uidType = random.below(3);
    made.arm = random.below(2);
    return made;
}

DeviceUser Centre::makeDeviceUser(std::uint32_t device, std::uint32_t user) const
{
    Random random = this->random<Device>(device, 0x3000 + user);
    const Language &language = languageOfDomain(domainOfSite(siteOfDevice(device)));
    DeviceUser made;
    made.userIndex = user;
    made.name = personName(language, random);
    if (random.chance(15))
        made.comment = random.pick(language.comments);
    if (random.chance(75))
        made.phone = phoneNumber(language, random);
    for (std::uint32_t section = 1; section <= shapeOfDevice(device).sections; ++section) {
        if (user == 1 || random.chance(60))
            made.sections.push_back(section);
    }
    return made;
}

} // namespace generator
