#include "bench/baseline/release.h"

#include <cstdlib>

namespace bench::rows {

namespace {

template <class... Blocks>
void freeAll(Blocks *...blocks)
{
    (std::free(blocks), ...);
}

void releaseMembers(const api::Locale &locale)
{
    freeAll(locale.iso, locale.description);
}

void releaseMembers(const api::Domain &domain)
{
    freeAll(domain.name, domain.orgId);
    release(domain.locale, 1);
}

void releaseMembers(const api::User &user)
{
    freeAll(user.name, user.login, user.contacts, user.isActive, user.domainId, user.orgId, user.roles, user.phone);
    release(user.domain, 1);
}

void releaseMembers(const api::Contractor &contractor)
{
    freeAll(contractor.inn, contractor.orgId, contractor.type, contractor.officialName, contractor.name,
            contractor.extra);
}

void releaseMembers(const api::Contract &contract)
{
    freeAll(contract.number, contract.name, contract.status, contract.date, contract.description, contract.extra);
    release(contract.contractor, 1);
    release(contract.user, 1);
}

void releaseMembers(const api::Zone &zone)
{
    freeAll(zone.name, zone.detector, zone.physic, zone.form, zone.flags, zone.delay, zone.scheduleId, zone.tracert,
            zone.uidType, zone.arm);
}

void releaseMembers(const api::Section &section)
{
    freeAll(section.name, section.scheduleId, section.tracert, section.flags, section.detector, section.arm,
            section.physic, section.form, section.delay, section.uidType);
    release(section.zones, section.zonesCount);
}

void releaseMembers(const api::DeviceUser &user)
{
    freeAll(user.name, user.comment, user.phone, user.sections);
}

void releaseMembers(const api::Device &device)
{
    freeAll(device.account, device.configVersion, device.isParted, device.clusterId, device.domainId);
    release(device.domain, 1);
    release(device.sections, device.sectionsCount);
    release(device.deviceUsers, device.deviceUsersCount);
}

void releaseMembers(const api::Location &location)
{
    freeAll(location.latitude, location.longitude);
}

void releaseMembers(const api::Site &site)
{
    freeAll(site.name, site.comment, site.extra, site.isCrossing, site.address, site.contractStatus, site.type,
            site.category, site.armMode, site.isDelegated, site.domainId, site.contractId, site.isSitePlanExists);
    release(site.domain, 1);
    release(site.contract, 1);
    release(site.location, 1);
}

void releaseMembers(const api::Event &event)
{
    freeAll(event.time, event.deviceId, event.sectionId, event.zoneId, event.active, event.eventClass, event.detector,
            event.reason, event.localTime, event.channel, event.data, event.reviewId, event.reviewState, event.userId,
            event.isClosed, event.affect, event.jData, event.deviceAccount, event.sectionName, event.zoneName,
            event.domainName);
}

} // namespace

template <class Api>
void release(Api *first, unsigned int count)
{
    if (first == nullptr)
        return;
    for (unsigned int i = 0; i < count; ++i)
        releaseMembers(first[i]);
    std::free(first);
}

template void release(api::Event *, unsigned int);
template void release(api::Device *, unsigned int);
template void release(api::User *, unsigned int);
template void release(api::Site *, unsigned int);
template void release(api::Locale *, unsigned int);

} // namespace bench::rows
