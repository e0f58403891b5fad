#include "generator/centre.h"

#include "generator/languages.h"
#include "generator/wording.h"

#include <algorithm>

namespace generator {

namespace {

constexpr std::uint32_t operatorsPerDomain = 4;

/// The devices of eight neighbouring sites, and how many come before each of them.
constexpr std::array<std::uint32_t, 8> devicesOfSites = {1, 1, 2, 1, 1, 3, 1, 2};
constexpr std::array<std::uint32_t, 8> devicesBeforeSites = {0, 1, 2, 4, 5, 6, 9, 10};
constexpr std::uint32_t devicesOfAllEight = 12;

template <class Record>
std::uint32_t idOf(std::uint32_t index)
{
    return Record::firstId + index;
}

const City &cityOfDomain(const Language &language, std::uint32_t domain)
{
    return language.cities[domain / languages.size() % language.cities.size()];
}

} // namespace

template <>
std::uint32_t Centre::count<Locale>() const
{
    return static_cast<std::uint32_t>(languages.size());
}

template <>
std::uint32_t Centre::count<Domain>() const
{
    return std::max(3U, m_scale.sites / 20);
}

template <>
std::uint32_t Centre::count<User>() const
{
    return operatorsPerDomain * count<Domain>();
}

template <>
std::uint32_t Centre::count<Contractor>() const
{
    return std::max(2U, m_scale.sites * 3 / 5);
}

/// The firms behind the domains come first, then the contractors'.
template <>
std::uint32_t Centre::count<Organization>() const
{
    return count<Domain>() + count<Contractor>();
}

template <>
std::uint32_t Centre::count<Contract>() const
{
    return std::max(2U, m_scale.sites * 3 / 4);
}

template <>
std::uint32_t Centre::count<Site>() const
{
    return m_scale.sites;
}

template <>
std::uint32_t Centre::count<Device>() const
{
    return firstDeviceOfSite(m_scale.sites);
}

template <>
std::uint32_t Centre::count<Event>() const
{
    return m_scale.events;
}

std::uint32_t Centre::firstDeviceOfSite(std::uint32_t site)
{
    return site / 8 * devicesOfAllEight + devicesBeforeSites[site % 8];
}

std::uint32_t Centre::deviceCountOfSite(std::uint32_t site)
{
    return devicesOfSites[site % 8];
}

std::uint32_t Centre::siteOfDevice(std::uint32_t device)
{
    const auto *const next =
        std::upper_bound(devicesBeforeSites.begin(), devicesBeforeSites.end(), device % devicesOfAllEight);
    return device / devicesOfAllEight * 8 + static_cast<std::uint32_t>(next - devicesBeforeSites.begin()) - 1;
}

std::uint32_t Centre::domainOfSite(std::uint32_t site) const
{
    return random<Site>(site, 1).below(count<Domain>());
}

std::uint32_t Centre::operatorOfDomain(std::uint32_t domain, Random &random) const
{
    return domain + count<Domain>() * random.below(operatorsPerDomain);
}

std::uint32_t Centre::contractOfDomain(std::uint32_t domain, Random &random) const
{
    // The first contract of each contractor; a tiny centre has domains without a contractor.
    const std::uint32_t contractors = count<Contractor>();
    if (domain >= contractors)
        return random.below(contractors);
    return domain + count<Domain>() * random.below((contractors - domain - 1) / count<Domain>() + 1);
}

const Language &Centre::languageOfDomain(std::uint32_t domain) const
{
    return languages[(domain + m_seed) % languages.size()];
}

std::u16string Centre::firmName(std::uint32_t index) const
{
    const std::uint32_t domains = count<Domain>();
    const Language &language = languageOfDomain(index % domains);
    Random random = this->random<Organization>(index, 1);
    return worded(random.pick(language.firms), language, random);
}

template <>
Locale Centre::make(std::uint32_t index) const
{
    const Language &language = languages[index];
    return {idOf<Locale>(index), std::u16string(language.iso), std::u16string(language.description)};
}

template <>
Domain Centre::make(std::uint32_t index) const
{
    const Language &language = languageOfDomain(index);
    std::u16string name(cityOfDomain(language, index).name);
    const std::size_t round = index / (languages.size() * language.cities.size());
    if (round > 0)
        name += u" " + decimal(round + 1);
    Domain domain;
    domain.id = idOf<Domain>(index);
    domain.name = name;
    domain.orgId = idOf<Organization>(index);
    domain.localeId = idOf<Locale>(static_cast<std::uint32_t>(&language - languages.data()));
    return domain;
}

template <>
User Centre::make(std::uint32_t index) const
{
    Random random = this->random<User>(index);
    const std::uint32_t domain = index % count<Domain>();
    const Language &language = languageOfDomain(domain);
    User user;
    user.id = idOf<User>(index);
    user.name = personName(language, random);
    user.login = u"op" + decimal(user.id);
    user.contacts = phoneNumber(language, random) + u", op" + decimal(user.id) + u"@example.org";
    if (random.chance(10))
        *user.contacts += u" 📱";
    user.isActive = random.chance(85);
    user.domainId = idOf<Domain>(domain);
    user.orgId = idOf<Organization>(domain);
    user.roles = 1U | std::uint64_t{random.below(256)} << 1U;
    if (random.chance(5))
        *user.roles |= std::uint64_t{1} << 40U;
    if (random.chance(80))
        user.phone = 555000000U + random.below(1000000);
    return user;
}

template <>
Organization Centre::make(std::uint32_t index) const
{
    Random random = this->random<Organization>(index);
    const std::uint32_t domain = index % count<Domain>();
    const Language &language = languageOfDomain(domain);
    const City &city = cityOfDomain(language, domain);
    Organization organization;
    organization.id = idOf<Organization>(index);
    organization.inn = u"00" + digits(random, 8);
    organization.officialName = firmName(index);
    organization.shortName = organization.officialName;
    if (random.chance(60)) {
        organization.kpp = digits(random, 9);
        organization.ogrn = u"1" + digits(random, 12);
    }
    organization.address = address(language, city, random);
    Person person;
    person.id = idOf<Person>(index);
    person.name = personName(language, random);
    person.phone = phoneNumber(language, random);
    if (random.chance(70))
        person.email = u"contact" + decimal(index + 1) + u"@example.com";
    if (random.chance(40))
        person.postal = address(language, city, random);
    organization.contact = person;
    organization.localeId = idOf<Locale>(static_cast<std::uint32_t>(&language - languages.data()));
    return organization;
}

template <>
Contractor Centre::make(std::uint32_t index) const
{
    Random random = this->random<Contractor>(index);
    const Organization organization = make<Organization>(count<Domain>() + index);
    Contractor contractor;
    contractor.id = idOf<Contractor>(index);
    contractor.inn = organization.inn;
    contractor.orgId = organization.id;
    contractor.type = random.between(1, 3);
    contractor.officialName = organization.officialName;
    contractor.name = organization.shortName;
    if (random.chance(20))
        contractor.extra = u"⭐";
    return contractor;
}

template <>
Contract Centre::make(std::uint32_t index) const
{
    Random random = this->random<Contract>(index);
    const std::uint32_t contractor = index % count<Contractor>();
    const std::uint32_t domain = contractor % count<Domain>();
    Contract contract;
    contract.id = idOf<Contract>(index);
    const std::u16string year = decimal(random.between(2019, 2026));
    contract.number = year + u"/" + decimal(random.between(100, 9999));
    contract.contractorId = idOf<Contractor>(contractor);
    contract.name = firmName(count<Domain>() + contractor);
    contract.status = random.chance(90) ? 1U : 2U;
    contract.date = historyStart - random.below(6 * 365) * 86400;
    if (random.chance(30))
        contract.description = u"24/7";
    if (random.chance(10))
        contract.extra = u"\"" + *contract.number + u"\"\\A";
    if (index % 15 != 14)
        contract.operatorId = idOf<User>(operatorOfDomain(domain, random));
    return contract;
}

template <>
Site Centre::make(std::uint32_t index) const
{
    Random random = this->random<Site>(index);
    const std::uint32_t domain = domainOfSite(index);
    const Language &language = languageOfDomain(domain);
    const City &city = cityOfDomain(language, domain);
    Site site;
    site.id = idOf<Site>(index);
    site.type = random.between(1, static_cast<std::uint32_t>(language.sites.size()));
    site.name = worded(language.sites[*site.type - 1], language, random);
    if (random.chance(35))
        site.comment = random.pick(language.comments);
    if (site.comment && random.chance(15))
        *site.comment += u" 🔑";
    if (random.chance(10))
        site.extra = u"grid " + digits(random, 4);
    site.isCrossing = random.chance(5);
    site.address = address(language, city, random);
    site.contractStatus = random.chance(95) ? 1 : -1;
    site.category = random.between(1, 4);
    site.armMode = random.below(3);
    site.isDelegated = random.chance(8);
    site.devices = make<Device>(firstDeviceOfSite(index), deviceCountOfSite(index));
    if (index % 40 != 39)
        site.domainId = idOf<Domain>(domain);
    if (random.chance(90)) {
        const auto near = [&](std::int32_t tenThousandths) {
            return (tenThousandths * 100 + static_cast<std::int32_t>(random.below(100000)) - 50000) / 1e6;
        };
        const double latitude = near(city.latitude);
        site.location = Location{latitude, near(city.longitude)};
    }
    if (index % 12 != 11)
        site.contractId = static_cast<std::int32_t>(idOf<Contract>(contractOfDomain(domain, random)));
    site.isSitePlanExists = random.chance(25);
    return site;
}

template <>
Domain Centre::makeChange(std::uint32_t index, std::uint32_t round) const
{
    Domain change;
    change.id = idOf<Domain>(index);
    change.name = *make<Domain>(index).name + u" · " + decimal(round);
    return change;
}

template <>
User Centre::makeChange(std::uint32_t index, std::uint32_t round) const
{
    Random random = this->random<User>(index, round + 1);
    User change;
    change.id = idOf<User>(index);
    if (random.chance(50))
        change.contacts = phoneNumber(languageOfDomain(index % count<Domain>()), random) + u" ☎";
    else
        change.isActive = random.chance(50);
    change.roles = random.below(1000);
    return change;
}

template <>
Organization Centre::makeChange(std::uint32_t index, std::uint32_t round) const
{
    Random random = this->random<Organization>(index, round + 2);
    const Organization former = make<Organization>(index);
    Organization change;
    change.id = former.id;
    change.shortName = *former.shortName + u" (" + decimal(round) + u")";
    if (random.chance(50)) {
        change.contact = former.contact;
        change.contact->phone = phoneNumber(languageOfDomain(index % count<Domain>()), random);
    }
    return change;
}

template <>
Contractor Centre::makeChange(std::uint32_t index, std::uint32_t round) const
{
    Contractor change;
    change.id = idOf<Contractor>(index);
    change.type = random<Contractor>(index, round + 1).between(1, 3);
    change.extra = u"№ " + decimal(round);
    return change;
}

template <>
Contract Centre::makeChange(std::uint32_t index, std::uint32_t round) const
{
    Random random = this->random<Contract>(index, round + 1);
    Contract change;
    change.id = idOf<Contract>(index);
    change.status = random.between(1, 3);
    change.operatorId = idOf<User>(random.below(count<User>()));
    return change;
}

template <>
Site Centre::makeChange(std::uint32_t index, std::uint32_t round) const
{
    Random random = this->random<Site>(index, round + 2);
    const Language &language = languageOfDomain(domainOfSite(index));
    Site change;
    change.id = idOf<Site>(index);
    change.comment = random.pick(language.comments);
    if (random.chance(50))
        change.armMode = random.below(3);
    if (random.chance(30))
        change.name = worded(random.pick(language.sites), language, random);
    return change;
}

} // namespace generator
