#include "model.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <tuple>

/// The library as the model sees it: its structures as records, its functions as operations.
namespace model {

namespace {

using namespace client::api;

struct Description {
    const char *table;
    const char *members; ///< In the order of the structure; "#" counts the list before it.
    const char *deleteKeys = "";
    const char *parents = "";
    const char *alternative = "";
};

template <class Api>
constexpr Description descriptionOf{};

#define DESCRIBE(Api, description, ...)                                                                                \
    template <>                                                                                                        \
    constexpr Description descriptionOf<Api> description;                                                              \
    auto membersOf(const Api &structure)                                                                               \
    {                                                                                                                  \
        const auto &[__VA_ARGS__] = structure;                                                                         \
        return std::tie(__VA_ARGS__);                                                                                  \
    }
#define LIST(...)                                                                                                      \
    {                                                                                                                  \
        __VA_ARGS__                                                                                                    \
    }

DESCRIBE(Locale, LIST("Locales", "id iso description"), a, b, c)
DESCRIBE(Domain, LIST("Domains", "id name org_id locale_id", "domain_id"), a, b, c, d)
DESCRIBE(User, LIST("Users", "id name login contacts active domain org roles Domain=domain phone", "op_id"), a, b, c, d,
         e, f, g, h, i, j)
DESCRIBE(Person, LIST("Persons", "id name phone email postal"), a, b, c, d, e)
DESCRIBE(Organization,
         LIST("Organizations", "org_id inn off_name short_name kpp ogrn address_text contact locale_id", "org_id"), a,
         b, c, d, e, f, g, h, i)
DESCRIBE(Contractor, LIST("Contractors", "id inn org_id type off_name name extra", "id"), a, b, c, d, e, f, g)
DESCRIBE(Contract, LIST("Contracts", "id number contractor_id c_name status date description extra operator_id", "id"),
         a, b, c, d, e, f, g, h, i)
DESCRIBE(Zone,
         LIST("Zones", "id name detector physic form flags delay schedule_id tracert uid_type arm",
              "device section zone", "device section", "zone"),
         a, b, c, d, e, f, g, h, i, j, k)
DESCRIBE(Section,
         LIST("Sections", "id name schedule_id zones # tracert flags detector arm physic form delay uid_type",
              "device section", "device", "section"),
         a, b, c, d, e, f, g, h, i, j, k, l, m)
DESCRIBE(DeviceUser, LIST("DeviceUsers", "user_index name comment phone sections #", "", "device"), a, b, c, d, e, f)
DESCRIBE(Device,
         LIST("Devices", "id account Domain=domain config_version sections # users # parted cluster_id domain", "id"),
         a, b, c, d, e, f, g, h, i, j, k)
DESCRIBE(Location, LIST("Locations", "id lat lon"), a, b, c)
DESCRIBE(Site,
         LIST("Sites",
              "id name comment extra is_crossing Domain=domain address_text Contract=contract_id contract_status type "
              "category arm_mode delegated devices # domain location=id contract_id site_plan",
              "site_id"),
         a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s)
DESCRIBE(Event,
         LIST("Events",
              "id time device section zone active class detector reason localtime channel data review_id review_state "
              "operator_id is_closed affect jdata DeviceAccount SectionName ZoneName DomainName",
              "id"),
         a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v)

std::vector<std::string> words(const char *text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

template <class Api>
const Kind &kindOf();

/// The type of a member, from its C type alone.
template <class Member>
Field fieldOf(const std::string &word)
{
    using Item = std::remove_cvref_t<std::remove_pointer_t<std::remove_cvref_t<Member>>>;
    constexpr std::array isType{
        std::is_same_v<Item, unsigned short>, std::is_same_v<Item, unsigned>, std::is_same_v<Item, int>,
        std::is_same_v<Item, unsigned char>,  std::is_same_v<Item, bool>,     std::is_same_v<Item, unsigned long long>,
        std::is_same_v<Item, double>,         std::is_class_v<Item>};
    const auto type = static_cast<Type>(std::ranges::find(isType, true) - isType.begin());
    const std::size_t end = word.find('=');
    Field field{word.substr(0, end), end == std::string::npos ? word : word.substr(end + 1), type};
    if constexpr (std::is_class_v<Item>)
        field.other = &kindOf<Item>();
    return field;
}

template <class Api>
const Kind &kindOf()
{
    static const Kind kind = [] {
        constexpr Description description = descriptionOf<Api>;
        const auto names = words(description.members);
        Kind result{description.table,          names[0], description.alternative, words(description.deleteKeys),
                    words(description.parents), {}};
        using Members = decltype(membersOf(std::declval<Api>()));
        [&]<std::size_t... I>(std::index_sequence<I...>)
        {
            (result.fields.push_back(fieldOf<std::tuple_element_t<I + 1, Members>>(names.at(I + 1))), ...);
        }
        (std::make_index_sequence<std::tuple_size_v<Members> - 1>());
        for (std::size_t i = 0; i < result.fields.size(); ++i) {
            if (result.fields[i].key == "#") {
                result.fields[i].type = Type::Count;
                result.fields[i - 1].type = Type::Items;
            }
        }
        return result;
    }();
    return kind;
}

template <class Api>
Record dump(const Api &structure);

template <class Member>
Value valueOf(const Member *member)
{
    if (member == nullptr)
        return {};
    if constexpr (std::is_same_v<Member, unsigned short>)
        return client::utf8(member);
    else if constexpr (std::is_class_v<Member>)
        return dump(*member);
    else
        return static_cast<double>(*member);
}

template <class Item>
Value valueOf(const Item *items, unsigned count)
{
    List result;
    for (unsigned i = 0; i < count; ++i)
        result.push_back(valueOf(items + i));
    if ((items == nullptr) != result.empty())
        return "a pointer that does not fit its count";
    return result.empty() ? Value() : result;
}

/// A structure as the model has it: absent members are left out.
template <class Api>
Record dump(const Api &structure)
{
    const Kind &kind = kindOf<Api>();
    using Members = decltype(membersOf(structure));
    const Members members = membersOf(structure);
    constexpr std::size_t size = std::tuple_size_v<Members>;
    Record record{{kind.id, double(structure.id)}};
    const auto add = [&]<std::size_t I>(std::integral_constant<std::size_t, I>) {
        Value value;
        if constexpr (I + 1 < size && std::is_same_v<std::tuple_element_t<(I + 1) % size, Members>, const unsigned &>)
            value = valueOf(std::get<I>(members), std::get<I + 1>(members));
        else if constexpr (!std::is_same_v<std::tuple_element_t<I, Members>, const unsigned &>)
            value = valueOf(std::get<I>(members));
        if (!value.isAbsent())
            record.emplace(kind.fields[I - 1].key, std::move(value));
    };
    [&]<std::size_t... I>(std::index_sequence<I...>)
    {
        (add(std::integral_constant<std::size_t, I + 1>()), ...);
    }
    (std::make_index_sequence<size - 1>());
    return record;
}

using Units = const unsigned short *;

/// The arguments of a call, for a function that takes them in any of the library's orders.
class Arguments
{
public:
    Arguments(const Call &call, unsigned *count)
        : m_ids(call.ids), m_texts(call.texts.begin(), call.texts.end()), m_count(count)
    {
    }

    template <class Argument>
    Argument next()
    {
        if constexpr (std::is_same_v<Argument, unsigned *>)
            return m_count;
        else if constexpr (std::is_same_v<Argument, Units>)
            return m_texts.at(m_text++).units();
        else
            return m_lengths++ < m_text ? m_texts.at(m_text - 1).length() : m_ids.at(m_lengths - 1 - m_text);
    }

private:
    const std::vector<unsigned> &m_ids;
    std::vector<client::Text> m_texts;
    unsigned *m_count;
    std::size_t m_text = 0;
    std::size_t m_lengths = 0;
};

template <class... Args>
constexpr std::size_t idCount = (std::size_t(0) + ... + std::is_same_v<Args, unsigned>)-(std::size_t(0) + ... +
                                                                                         std::is_same_v<Args, Units>);

template <class Api, class... Args>
Operation plain(const char *name, Verb verb, unsigned (*function)(Args...))
{
    return {name, verb, &kindOf<Api>(), idCount<Args...>, false, [=](const Call &call) {
                Arguments arguments(call, nullptr);
                return Outcome{std::apply(function, std::tuple<Args...>{arguments.next<Args>()...})};
            }};
}

/// A function that hands out. A pointer that is occupied holds a block of its own, as `removeAffectFlag` wants it.
template <class Out, class... Args, class Release>
Operation giving(const char *name, Verb verb, const Kind &kind, unsigned (*function)(Out **, Args...), Release release)
{
    return {name, verb, &kind, idCount<Args...>, true, [=](const Call &call) {
                constexpr unsigned untouched = 4711;
                unsigned count = untouched;
                Arguments arguments(call, &count);
                auto *const former = call.isOccupied ? static_cast<Out *>(std::calloc(1, sizeof(Out))) : nullptr;
                Out *out = former;
                Outcome outcome{std::apply(function, std::tuple<Out **, Args...>{&out, arguments.next<Args>()...})};
                if (outcome.code != 0) {
                    outcome.content = out == former && count == untouched ? "" : "handed out in spite of the code";
                    std::free(former);
                } else if constexpr (std::is_invocable_v<Release, Out *, unsigned>) {
                    std::vector<std::string> records;
                    for (unsigned i = 0; i < count; ++i)
                        records.push_back(json(dump(out[i])));
                    outcome.content = textOf(std::move(records), verb == Verb::Add);
                    release(out, count);
                } else if (out != nullptr) {
                    outcome.content = json(valueOf(out));
                    release(out);
                }
                return outcome;
            }};
}

Outcome siteNameAndAddress(const Call &call)
{
    unsigned short occupant = 0;
    unsigned short *name = nullptr;
    unsigned short *address = call.isOccupied ? &occupant : nullptr;
    const unsigned code = getSiteNameAndAddress(&name, &address, call.ids[0]);
    if (code != 0)
        return {code, name == nullptr && (address == nullptr) != call.isOccupied ? "" : "handed out"};
    Outcome outcome{code, json(List{valueOf(name), valueOf(address)})};
    std::free(name);
    std::free(address);
    return outcome;
}

/// Exits the cache, sees that it is gone, and launches it anew on its file.
Outcome relaunch(std::unique_ptr<client::RunningCache> &cache)
{
    cache.reset();
    std::ostringstream content;
    content << getState() << " " << getLaunchCacheResult() << " " << clearAll();
    cache = std::make_unique<client::RunningCache>();
    return {getLaunchCacheResult(), content.str()};
}

} // namespace

// What kinds of record have alike.
#define ADDS(Kind) plain<Kind>("add" #Kind "s", Verb::Add, add##Kind##s)
#define DELETES(Kind) plain<Kind>("delete" #Kind, Verb::Delete, delete##Kind)
#define GIVES(Kind, verb, function) giving(#function, Verb::verb, kindOf<Kind>(), function, free##Kind)
#define LISTS(Kind, verb, function) giving(#function, Verb::verb, kindOf<Kind>(), function, free##Kind##sArray)
#define READS(Kind)                                                                                                    \
    GIVES(Kind, Get, get##Kind), LISTS(Kind, All, get##Kind##s), LISTS(Kind, Filter, get##Kind##sWithParams)
#define WRITES(Kind) GIVES(Kind, Update, update##Kind), DELETES(Kind)

std::vector<Operation> operations(std::unique_ptr<client::RunningCache> &cache)
{
    const Kind &events = kindOf<Event>();
    return {
        ADDS(Locale),
        READS(Locale), //
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
        GIVES(Device, AddOne, addDevice),
        GIVES(Device, Update, updateDeviceFw),
        READS(Section),
        WRITES(Section),
        READS(Zone),
        WRITES(Zone),
        LISTS(Zone, All, getZonesForSection),
        LISTS(Zone, Filter, getZonesForSectionWithParams),
        ADDS(Site),
        READS(Site),
        WRITES(Site),
        {"getSiteNameAndAddress", Verb::Fields, &kindOf<Site>(), 1, true, siteNameAndAddress},
        GIVES(Event, AddOne, addEvent),
        LISTS(Event, Add, addEvents),
        LISTS(Event, Range, getEvents),
        LISTS(Event, Affects, getAffectEvents),
        GIVES(Event, RemoveFlag, removeAffectFlag),
        plain<Event>("clearEventsBeforeDateExceptAffects", Verb::Prune, clearEventsBeforeDateExceptAffects),
        plain<Event>("setServerIp", Verb::SetServer, setServerIp),
        giving("getServerIp", Verb::GetServer, events, getServerIp, std::free),
        plain<Event>("clearAllExceptEvents", Verb::ClearExceptEvents, clearAllExceptEvents),
        plain<Event>("clearAll", Verb::ClearAll, clearAll),
        {"exitCache, launchCache", Verb::Relaunch, &events, 0, false, [&](const Call &) { return relaunch(cache); }}};
}

} // namespace model
