#include "bench/answers.h"

#include <bit>
#include <span>
#include <type_traits>

namespace bench {

namespace {

/// Mixes values into one number. Each structure is taken apart whole, so that a new member cannot be forgotten.
class Digest
{
public:
    explicit Digest(std::uint64_t value) : m_value(value) {}

    template <class Number>
    requires std::is_arithmetic_v<Number>
    void add(Number number)
    {
        if constexpr (std::is_same_v<Number, double>)
            mix(std::bit_cast<std::uint64_t>(number));
        else
            mix(static_cast<std::uint64_t>(number));
    }

    void add(const unsigned short *text)
    {
        for (; text != nullptr && *text != 0; ++text)
            mix(*text);
        mix(text == nullptr ? absent : end);
    }

    template <class Value>
    void add(const Value *value)
    {
        if (value == nullptr)
            mix(absent);
        else
            add(*value);
    }

    void add(const api::Locale &locale)
    {
        const auto &[id, iso, description] = locale;
        addAll(id, iso, description);
    }

    void add(const api::Domain &domain)
    {
        const auto &[id, name, orgId, locale] = domain;
        addAll(id, name, orgId, locale);
    }

    void add(const api::User &user)
    {
        const auto &[id, name, login, contacts, isActive, domainId, orgId, roles, domain, phone] = user;
        addAll(id, name, login, contacts, isActive, domainId, orgId, roles, domain, phone);
    }

    void add(const api::Contractor &contractor)
    {
        const auto &[id, inn, orgId, type, officialName, name, extra] = contractor;
        addAll(id, inn, orgId, type, officialName, name, extra);
    }

    void add(const api::Contract &contract)
    {
        const auto &[id, number, contractor, name, status, date, description, extra, user] = contract;
        addAll(id, number, contractor, name, status, date, description, extra, user);
    }

    void add(const api::Zone &zone)
    {
        const auto &[id, name, detector, physic, form, flags, delay, scheduleId, tracert, uidType, arm] = zone;
        addAll(id, name, detector, physic, form, flags, delay, scheduleId, tracert, uidType, arm);
    }

    void add(const api::Section &section)
    {
        const auto &[id, name, scheduleId, zones, zonesCount, tracert, flags, detector, arm, physic, form, delay,
                     uidType] = section;
        addAll(id, name, scheduleId, std::span(zones, zonesCount), tracert, flags, detector, arm, physic, form, delay,
               uidType);
    }

    void add(const api::DeviceUser &user)
    {
        const auto &[id, name, comment, phone, sections, sectionsCount] = user;
        addAll(id, name, comment, phone, std::span(sections, sectionsCount));
    }

    void add(const api::Device &device)
    {
        const auto &[id, account, domain, configVersion, sections, sectionsCount, deviceUsers, deviceUsersCount,
                     isParted, clusterId, domainId] = device;
        addAll(id, account, domain, configVersion, std::span(sections, sectionsCount),
               std::span(deviceUsers, deviceUsersCount), isParted, clusterId, domainId);
    }

    void add(const api::Location &location)
    {
        const auto &[id, latitude, longitude] = location;
        addAll(id, latitude, longitude);
    }

    void add(const api::Site &site)
    {
        const auto &[id, name, comment, extra, isCrossing, domain, address, contract, contractStatus, type, category,
                     armMode, isDelegated, devices, devicesCount, domainId, location, contractId, isSitePlanExists] =
            site;
        addAll(id, name, comment, extra, isCrossing, domain, address, contract, contractStatus, type, category, armMode,
               isDelegated, std::span(devices, devicesCount), domainId, location, contractId, isSitePlanExists);
    }

    void add(const api::Event &event)
    {
        const auto &[id, time, deviceId, sectionId, zoneId, active, eventClass, detector, reason, localTime, channel,
                     data, reviewId, reviewState, userId, isClosed, affect, jData, deviceAccount, sectionName, zoneName,
                     domainName] = event;
        addAll(id, time, deviceId, sectionId, zoneId, active, eventClass, detector, reason, localTime, channel, data,
               reviewId, reviewState, userId, isClosed, affect, jData, deviceAccount, sectionName, zoneName,
               domainName);
    }

    template <class Element>
    void add(std::span<Element> elements)
    {
        mix(elements.size());
        for (const Element &element : elements)
            add(element);
    }

    [[nodiscard]] std::uint64_t value() const { return m_value; }

private:
    static constexpr std::uint64_t absent = 0x100000001;
    static constexpr std::uint64_t end = 0x100000002;

    template <class... Members>
    void addAll(const Members &...members)
    {
        (add(members), ...);
    }

    void mix(std::uint64_t value)
    {
        m_value = (m_value ^ value) * 0x9e3779b97f4a7c15;
        m_value ^= m_value >> 29U;
    }

    std::uint64_t m_value;
};

} // namespace

template <class Api>
void Answers::look(const Api *first, unsigned int count)
{
    const double start = now(m_clock);
    Digest digest(m_digest);
    digest.add(std::span(first, count));
    m_digest = digest.value();
    m_secondsOffTheClock += now(m_clock) - start;
}

template void Answers::look(const api::Event *, unsigned int);
template void Answers::look(const api::Device *, unsigned int);
template void Answers::look(const api::User *, unsigned int);
template void Answers::look(const api::Site *, unsigned int);
template void Answers::look(const api::Locale *, unsigned int);

} // namespace bench
