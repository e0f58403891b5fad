#include "generator/centre.h"
#include "generator/languages.h"
#include "generator/wording.h"

/// The history: what the devices report.
namespace generator {

namespace {

/// How many of a day's hundred events lie before each hour, in local habits of opening and closing.
constexpr std::array<std::uint32_t, 25> eventsBeforeHour = {0,  2,  4,  5,  6,  8,  12, 19, 29, 37, 41, 45, 49,
                                                            53, 57, 60, 64, 70, 79, 87, 92, 95, 97, 99, 100};

/// The second of the day at which a share of the day's events, in millionths, lies behind.
std::uint32_t secondOfDay(std::uint32_t millionths)
{
    std::uint32_t hour = 23;
    while (eventsBeforeHour[hour] * 10000 > millionths)
        --hour;
    const std::uint32_t before = eventsBeforeHour[hour] * 10000;
    const std::uint32_t width = (eventsBeforeHour[hour + 1] - eventsBeforeHour[hour]) * 10000;
    return hour * 3600 + static_cast<std::uint32_t>(std::uint64_t{millionths - before} * 3600 / width);
}

EventClass classOf(bool isAffecting, Random &random)
{
    const std::uint32_t percent = random.below(100);
    if (isAffecting)
        return percent < 75 ? EventClass::Intrusion : EventClass::Tamper;
    if (percent < 32)
        return EventClass::Armed;
    if (percent < 64)
        return EventClass::Disarmed;
    if (percent < 84)
        return EventClass::Test;
    if (percent < 90)
        return EventClass::MainsLost;
    if (percent < 95)
        return EventClass::Reconnected;
    return percent < 98 ? EventClass::Intrusion : EventClass::Tamper;
}

/// Whether it comes from a zone. Only the zone's detector tells a fire from an intrusion.
bool isFromZone(EventClass eventClass)
{
    return eventClass == EventClass::Intrusion || eventClass == EventClass::Tamper;
}

} // namespace

std::uint32_t Centre::timeOfEvent(std::uint32_t index) const
{
    // Events are evenly spaced in shares of days, which the habits of the day then stretch: the order is kept.
    constexpr std::uint64_t millionthsOfDay = 1000000;
    const std::uint64_t total = historySeconds / 86400 * millionthsOfDay;
    const std::uint64_t share = std::uint64_t{index} * total / std::max(1U, m_scale.events);
    return historyStart + static_cast<std::uint32_t>(share / millionthsOfDay) * 86400 +
           secondOfDay(static_cast<std::uint32_t>(share % millionthsOfDay));
}

template <>
Event Centre::make(std::uint32_t index) const
{
    Random random = this->random<Event>(index);
    const std::uint32_t device = random.below(std::max(1U, count<Device>()));
    const std::uint32_t domain = domainOfSite(siteOfDevice(device));
    const Language &language = languageOfDomain(domain);
    const bool isAffecting = index % 41 == 7;
    EventClass eventClass = classOf(isAffecting, random);
    Event event;
    event.id = Event::firstId + index;
    event.time = timeOfEvent(index);
    // Devices that nobody knows have numbers below those that the centre gives.
    event.deviceId = static_cast<std::int32_t>(index % 97 == 13 ? random.between(1, 500) : Device::firstId + device);
    const DeviceShape shape = shapeOfDevice(device);
    const std::uint32_t section = random.between(1, shape.sections);
    event.sectionId = section;
    if (isFromZone(eventClass)) {
        event.zoneId = (section - 1) * shape.zonesPerSection + random.between(1, shape.zonesPerSection);
        event.detector = static_cast<std::uint8_t>((*event.zoneId - 1) % detectorCount + 1);
        if (eventClass != EventClass::Tamper)
            eventClass = Detector{*event.detector} == Detector::Smoke ? EventClass::Fire : EventClass::Intrusion;
    }
    event.active = static_cast<std::uint8_t>(eventClass != EventClass::Reconnected);
    event.eventClass = static_cast<std::uint8_t>(eventClass);
    event.reason = static_cast<std::uint8_t>(random.below(6));
    event.localTime = static_cast<std::uint32_t>(static_cast<std::int64_t>(*event.time) + language.secondsToUtc);
    event.channel = random.chance(4) ? -1 : static_cast<std::int32_t>(random.between(1, 2));
    event.data = language.events[static_cast<std::size_t>(eventClass) - 1];
    if (event.zoneId) {
        event.operatorId = User::firstId + operatorOfDomain(domain, random);
        event.reviewId = 700000 + index;
        event.reviewState = static_cast<std::uint8_t>(random.between(1, 3));
        event.isClosed = !isAffecting;
    }
    if (index % 61 != 20 || isAffecting)
        event.affect = isAffecting;
    if (random.chance(25)) {
        const std::u16string signal = decimal(random.between(45, 110));
        event.jdata = u"{\"signal\":-" + signal + u",\"battery\":\"12." + decimal(random.below(10)) + u" V\"}";
    }
    return event;
}

} // namespace generator
