#include "model.h"

#include <cstdlib>

namespace model {

namespace {

using namespace client::api;

template <class Member>
constexpr Type typeOf = Type::Text;
template <>
constexpr Type typeOf<unsigned> = Type::Unsigned;
template <>
constexpr Type typeOf<int> = Type::Signed;
template <>
constexpr Type typeOf<unsigned char> = Type::Byte;
template <>
constexpr Type typeOf<bool> = Type::Flag;
template <>
constexpr Type typeOf<unsigned long long> = Type::Wide;
template <>
constexpr Type typeOf<double> = Type::Real;

Value valueOf(const unsigned short *text)
{
    return client::utf8(text);
}

template <class Number>
requires std::is_arithmetic_v<Number> Value valueOf(const Number *number)
{
    return static_cast<double>(*number);
}

/// A structure as the model has it.
template <class Api>
Value valueOf(const Api *structure)
{
    const Kind &kind = kindOf<Api>();
    Record record{{kind.id, double(structure->id)}};
    for (const Field &field : kind.fields) {
        if (Value value = field.dump(structure); !value.isAbsent())
            record.emplace(field.key, std::move(value));
    }
    return record;
}

template <class Api, class Member>
std::function<Value(const void *)> dumpOf(Member *Api::*member)
{
    return [member](const void *structure) {
        const Member *value = static_cast<const Api *>(structure)->*member;
        return value == nullptr ? Value() : valueOf(value);
    };
}

template <class Api, class Member>
Field column(const char *key, Member *Api::*member, Oddity oddity = Oddity::None)
{
    return {key, typeOf<Member>, dumpOf(member), nullptr, {}, oddity};
}

template <class Api, class Other>
Field nested(const char *key, Other *Api::*member, Oddity oddity = Oddity::None)
{
    return {key, Type::Nested, dumpOf(member), &kindOf<Other>(), key, oddity};
}

template <class Api, class Other>
Field joined(const char *key, Other *Api::*member, const char *by, Oddity oddity = Oddity::None)
{
    return {key, Type::Joined, dumpOf(member), &kindOf<Other>(), by, oddity};
}

template <class Api, class Member>
Field lent(const char *key, Member *Api::*member)
{
    return {key, Type::Lent, dumpOf(member)};
}

template <class Api, class Item>
Field list(const char *key, Item *Api::*items, unsigned Api::*count)
{
    Field field{key, Type::Numbers, [items, count](const void *structure) -> Value {
                    const Api &owner = *static_cast<const Api *>(structure);
                    List result;
                    for (unsigned i = 0; i < owner.*count; ++i)
                        result.push_back(valueOf(owner.*items + i));
                    if ((owner.*items == nullptr) != result.empty())
                        return "a pointer that does not fit its count";
                    return result.empty() ? Value() : result;
                }};
    if constexpr (std::is_class_v<Item>) {
        field.type = Type::Children;
        field.other = &kindOf<Item>();
    }
    return field;
}

} // namespace

template <>
const Kind &kindOf<Locale>()
{
    static const Kind kind{.table = "Locales",
                           .fields = {column("iso", &Locale::iso), column("description", &Locale::description)}};
    return kind;
}

template <>
const Kind &kindOf<Domain>()
{
    static const Kind kind{.table = "Domains",
                           .deleteKeys = {"domain_id"},
                           .fields = {column("name", &Domain::name), column("org_id", &Domain::orgId),
                                      nested("locale_id", &Domain::locale, Oddity::IdentifierAlone)}};
    return kind;
}

template <>
const Kind &kindOf<User>()
{
    static const Kind kind{.table = "Users",
                           .deleteKeys = {"op_id"},
                           .fields = {column("name", &User::name), column("login", &User::login),
                                      column("contacts", &User::contacts), column("active", &User::isActive),
                                      column("domain", &User::domainId), column("org", &User::orgId),
                                      column("roles", &User::roles), joined("Domain", &User::domain, "domain"),
                                      column("phone", &User::phone)}};
    return kind;
}

template <>
const Kind &kindOf<Person>()
{
    static const Kind kind{.table = "Persons",
                           .fields = {column("name", &Person::name), column("phone", &Person::phone),
                                      column("email", &Person::email), column("postal", &Person::postal)}};
    return kind;
}

template <>
const Kind &kindOf<Organization>()
{
    static const Kind kind{
        .table = "Organizations",
        .id = "org_id",
        .deleteKeys = {"org_id"},
        .needsJoinedRows = true,
        .fields = {column("inn", &Organization::inn), column("off_name", &Organization::officialName),
                   column("short_name", &Organization::shortName), column("kpp", &Organization::kpp),
                   column("ogrn", &Organization::ogrn), column("address_text", &Organization::address),
                   nested("contact", &Organization::contact, Oddity::WholeInRequest),
                   nested("locale_id", &Organization::locale)}};
    return kind;
}

template <>
const Kind &kindOf<Contractor>()
{
    static const Kind kind{.table = "Contractors",
                           .deleteKeys = {"id"},
                           .fields = {column("inn", &Contractor::inn), column("org_id", &Contractor::orgId),
                                      column("type", &Contractor::type), column("off_name", &Contractor::officialName),
                                      column("name", &Contractor::name), column("extra", &Contractor::extra)}};
    return kind;
}

template <>
const Kind &kindOf<Contract>()
{
    static const Kind kind{.table = "Contracts",
                           .deleteKeys = {"id"},
                           .needsJoinedRows = true,
                           .fields = {column("number", &Contract::number),
                                      nested("contractor_id", &Contract::contractor), column("c_name", &Contract::name),
                                      column("status", &Contract::status), column("date", &Contract::date),
                                      column("description", &Contract::description), column("extra", &Contract::extra),
                                      nested("operator_id", &Contract::user)}};
    return kind;
}

template <>
const Kind &kindOf<Zone>()
{
    static const Kind kind{.table = "Zones",
                           .alternative = "zone",
                           .deleteKeys = {"device", "section", "zone"},
                           .parents = {"device", "section"},
                           .fields = {column("name", &Zone::name), column("detector", &Zone::detector),
                                      column("physic", &Zone::physic), column("form", &Zone::form),
                                      column("flags", &Zone::flags), column("delay", &Zone::delay),
                                      column("schedule_id", &Zone::scheduleId), column("tracert", &Zone::tracert),
                                      column("uid_type", &Zone::uidType), column("arm", &Zone::arm)}};
    return kind;
}

template <>
const Kind &kindOf<Section>()
{
    static const Kind kind{.table = "Sections",
                           .alternative = "section",
                           .deleteKeys = {"device", "section"},
                           .parents = {"device"},
                           .asParent = "section",
                           .fields = {column("name", &Section::name), column("schedule_id", &Section::scheduleId),
                                      list("zones", &Section::zones, &Section::zonesCount),
                                      column("tracert", &Section::tracert), column("flags", &Section::flags),
                                      column("detector", &Section::detector), column("arm", &Section::arm),
                                      column("physic", &Section::physic), column("form", &Section::form),
                                      column("delay", &Section::delay), column("uid_type", &Section::uidType)}};
    return kind;
}

template <>
const Kind &kindOf<DeviceUser>()
{
    static const Kind kind{.table = "DeviceUsers",
                           .id = "user_index",
                           .parents = {"device"},
                           .fields = {column("name", &DeviceUser::name), column("comment", &DeviceUser::comment),
                                      column("phone", &DeviceUser::phone),
                                      list("sections", &DeviceUser::sections, &DeviceUser::sectionsCount)}};
    return kind;
}

template <>
const Kind &kindOf<Device>()
{
    static const Kind kind{
        .table = "Devices",
        .deleteKeys = {"id"},
        .asParent = "device",
        .needsJoinedRows = true,
        .fields = {column("account", &Device::account), joined("Domain", &Device::domain, "domain"),
                   column("config_version", &Device::configVersion),
                   list("sections", &Device::sections, &Device::sectionsCount),
                   list("users", &Device::deviceUsers, &Device::deviceUsersCount), column("parted", &Device::isParted),
                   column("cluster_id", &Device::clusterId, Oddity::NoFilter), column("domain", &Device::domainId)}};
    return kind;
}

template <>
const Kind &kindOf<Location>()
{
    static const Kind kind{.table = "Locations",
                           .fields = {column("lat", &Location::latitude), column("lon", &Location::longitude)}};
    return kind;
}

template <>
const Kind &kindOf<Site>()
{
    static const Kind kind = [] {
        Field location = nested("location", &Site::location);
        location.type = Type::Attached;
        location.by = "id";
        return Kind{
            .table = "Sites",
            .deleteKeys = {"site_id"},
            .needsJoinedRows = true,
            .fields = {column("name", &Site::name), column("comment", &Site::comment), column("extra", &Site::extra),
                       column("is_crossing", &Site::isCrossing),
                       joined("Domain", &Site::domain, "domain", Oddity::ReadApart),
                       column("address_text", &Site::address), joined("Contract", &Site::contract, "contract_id"),
                       column("contract_status", &Site::contractStatus), column("type", &Site::type),
                       column("category", &Site::category), column("arm_mode", &Site::armMode),
                       column("delegated", &Site::isDelegated), list("devices", &Site::devices, &Site::devicesCount),
                       column("domain", &Site::domainId), location, column("contract_id", &Site::contractId),
                       column("site_plan", &Site::isSitePlanExists)}};
    }();
    return kind;
}

template <>
const Kind &kindOf<Event>()
{
    static const Kind kind{.table = "Events",
                           .deleteKeys = {"id"},
                           .fields = {column("time", &Event::time),
                                      column("device", &Event::deviceId),
                                      column("section", &Event::sectionId),
                                      column("zone", &Event::zoneId),
                                      column("active", &Event::active),
                                      column("class", &Event::eventClass),
                                      column("detector", &Event::detector),
                                      column("reason", &Event::reason),
                                      column("localtime", &Event::localTime),
                                      column("channel", &Event::channel),
                                      column("data", &Event::data),
                                      column("review_id", &Event::reviewId),
                                      column("review_state", &Event::reviewState),
                                      column("operator_id", &Event::userId),
                                      column("is_closed", &Event::isClosed),
                                      column("affect", &Event::affect),
                                      column("jdata", &Event::jData),
                                      lent("DeviceAccount", &Event::deviceAccount),
                                      lent("SectionName", &Event::sectionName),
                                      lent("ZoneName", &Event::zoneName),
                                      lent("DomainName", &Event::domainName)}};
    return kind;
}

namespace {

using Units = const unsigned short *;

template <class Function, std::size_t... I, class... Args>
unsigned callWithIds(Function function, const Call &call, std::index_sequence<I...>, Args... args)
{
    return function(args..., call.ids[I]...);
}

/// Calls what hands out by a pointer. One that is occupied holds a block of its own, as `removeAffectFlag` wants it.
template <class Api, class Invoke, class ToText, class Release>
Outcome handedOut(const Call &call, Invoke &&invoke, ToText &&toText, Release &&release)
{
    Api *const former = call.isOccupied ? static_cast<Api *>(std::calloc(1, sizeof(Api))) : nullptr;
    Api *out = former;
    Outcome outcome{invoke(&out), {}};
    if (outcome.code == 0 && out != nullptr) {
        outcome.content = toText(out);
        release(out);
    } else {
        outcome.content = out == former ? "" : "handed out in spite of the code";
        std::free(former);
    }
    return outcome;
}

template <class Api, class... Ids>
Operation one(const char *name, unsigned (*get)(Api **, Ids...), unsigned (*release)(Api *))
{
    return {name, Verb::Get, &kindOf<Api>(), sizeof...(Ids), [=](const Call &call) {
                const auto invoke = [&](Api **out) {
                    return callWithIds(get, call, std::index_sequence_for<Ids...>(), out);
                };
                return handedOut<Api>(
                    call, invoke, [](Api *out) { return json(valueOf(out)); }, release);
            }};
}

template <class Api>
Operation change(const char *name, Verb verb, unsigned (*update)(Api **, Units, unsigned), unsigned (*release)(Api *))
{
    return {name, verb, &kindOf<Api>(), 0, [=](const Call &call) {
                const client::Text text(call.text);
                return handedOut<Api>(
                    call, [&](Api **out) { return update(out, text.units(), text.length()); },
                    [](Api *out) { return json(valueOf(out)); }, release);
            }};
}

/// A list, by a call with the arguments in front of the identifiers that `invoke` is given as a tail.
template <class Api, class Invoke>
Outcome listed(const Call &call, unsigned (*release)(Api *, unsigned), Invoke &&invoke)
{
    constexpr unsigned untouched = 4711;
    unsigned count = untouched;
    const auto toText = [&](Api *items) {
        std::vector<std::string> records;
        for (unsigned i = 0; i < count; ++i)
            records.push_back(json(valueOf(items + i)));
        return text(std::move(records), call.operation->verb == Verb::AddEvents);
    };
    Outcome outcome = handedOut<Api>(
        call, [&](Api **out) { return invoke(out, &count); }, toText, [&](Api *items) { release(items, count); });
    if (outcome.code != 0 && count != untouched)
        outcome.content += "count changed in spite of the code";
    return outcome;
}

template <class Api, class... Ids>
Operation all(const char *name, unsigned (*get)(Api **, unsigned *, Ids...), unsigned (*release)(Api *, unsigned),
              Verb verb = Verb::All)
{
    return {name, verb, &kindOf<Api>(), sizeof...(Ids), [=](const Call &call) {
                return listed(call, release, [&](Api **out, unsigned *count) {
                    return callWithIds(get, call, std::index_sequence_for<Ids...>(), out, count);
                });
            }};
}

template <class Api, class... Ids>
Operation filtered(const char *name, unsigned (*get)(Api **, unsigned *, Units, unsigned, Units, unsigned, Ids...),
                   unsigned (*release)(Api *, unsigned))
{
    return {name, Verb::Filter, &kindOf<Api>(), sizeof...(Ids), [=](const Call &call) {
                const client::Text field(call.field);
                const client::Text value(call.value);
                return listed(call, release, [&](Api **out, unsigned *count) {
                    return callWithIds(get, call, std::index_sequence_for<Ids...>(), out, count, field.units(),
                                       field.length(), value.units(), value.length());
                });
            }};
}

template <class Api>
Operation plain(const char *name, Verb verb, unsigned (*write)(Units, unsigned))
{
    return {name, verb, &kindOf<Api>(), 0, [=](const Call &call) {
                const client::Text text(call.text);
                return Outcome{write(text.units(), text.length()), {}};
            }};
}

Operation cleared(const char *name, Verb verb, unsigned (*clear)())
{
    return {name, verb, &kindOf<Event>(), 0, [=](const Call &) { return Outcome{clear(), {}}; }};
}

Outcome serverIp(const Call &call)
{
    return handedOut<unsigned short>(call, getServerIp, client::utf8, std::free);
}

Outcome siteNameAndAddress(const Call &call)
{
    unsigned short occupant = 0;
    unsigned short *name = nullptr;
    unsigned short *address = call.isOccupied ? &occupant : nullptr;
    const unsigned code = getSiteNameAndAddress(&name, &address, call.ids[0]);
    if (code != 0)
        return {code, name == nullptr && address == (call.isOccupied ? &occupant : nullptr) ? "" : "handed out"};
    const auto valueOrNothing = [](const unsigned short *text) { return text ? valueOf(text) : Value(); };
    Outcome outcome{code, json(List{valueOrNothing(name), valueOrNothing(address)})};
    std::free(name);
    std::free(address);
    return outcome;
}

/// Exits the cache, sees that it is gone, and launches it anew on its file.
Outcome relaunch(std::optional<client::RunningCache> &cache)
{
    cache.reset();
    std::string content =
        std::to_string(getState()) + " " + std::to_string(getLaunchCacheResult()) + " " + std::to_string(clearAll());
    cache.emplace();
    return {getLaunchCacheResult(), content};
}

} // namespace

// The functions that kinds of record have alike.
#define READS(Kind)                                                                                                    \
    one("get" #Kind, get##Kind, free##Kind), all("get" #Kind "s", get##Kind##s, free##Kind##sArray),                   \
        filtered("get" #Kind "sWithParams", get##Kind##sWithParams, free##Kind##sArray)
#define ADDS(Kind) plain<Kind>("add" #Kind "s", Verb::Add, add##Kind##s)
#define DELETES(Kind) plain<Kind>("delete" #Kind, Verb::Delete, delete##Kind)
#define WRITES(Kind) change("update" #Kind, Verb::Update, update##Kind, free##Kind), DELETES(Kind)

std::vector<Operation> operations(std::optional<client::RunningCache> &cache)
{
    return {
        ADDS(Locale),
        READS(Locale),
        ADDS(Domain),
        READS(Domain),
        WRITES(Domain),
        ADDS(User),
        READS(User),
        WRITES(User),
        ADDS(Organization),
        READS(Organization),
        WRITES(Organization),
        ADDS(Contractor),
        READS(Contractor),
        WRITES(Contractor),
        ADDS(Contract),
        READS(Contract),
        WRITES(Contract),
        ADDS(Device),
        READS(Device),
        DELETES(Device),
        change("addDevice", Verb::AddOne, addDevice, freeDevice),
        change("updateDeviceFw", Verb::UpdateVersion, updateDeviceFw, freeDevice),
        READS(Section),
        WRITES(Section),
        READS(Zone),
        WRITES(Zone),
        all("getZonesForSection", getZonesForSection, freeZonesArray),
        filtered("getZonesForSectionWithParams", getZonesForSectionWithParams, freeZonesArray),
        ADDS(Site),
        READS(Site),
        WRITES(Site),
        {"getSiteNameAndAddress", Verb::NameAndAddress, &kindOf<Site>(), 1, siteNameAndAddress},
        change("addEvent", Verb::AddOne, addEvent, freeEvent),
        {"addEvents", Verb::AddEvents, &kindOf<Event>(), 0,
         [](const Call &call) {
             const client::Text text(call.text);
             return listed(call, freeEventsArray, [&](Event **out, unsigned *count) {
                 return addEvents(out, count, text.units(), text.length());
             });
         }},
        all("getEvents", getEvents, freeEventsArray, Verb::Range),
        all("getAffectEvents", getAffectEvents, freeEventsArray, Verb::Affects),
        change("removeAffectFlag", Verb::RemoveFlag, removeAffectFlag, freeEvent),
        {"clearEventsBeforeDateExceptAffects", Verb::Prune, &kindOf<Event>(), 1,
         [](const Call &call) {
             return Outcome{clearEventsBeforeDateExceptAffects(call.ids[0]), {}};
         }},
        plain<Event>("setServerIp", Verb::SetServer, setServerIp),
        {"getServerIp", Verb::GetServer, &kindOf<Event>(), 0, serverIp},
        cleared("clearAllExceptEvents", Verb::ClearExceptEvents, clearAllExceptEvents),
        cleared("clearAll", Verb::ClearAll, clearAll),
        {"exitCache, launchCache", Verb::Relaunch, &kindOf<Event>(), 0,
         [&cache](const Call &) { return relaunch(cache); }},
    };
}

} // namespace model
