/// @file
/// The kinds of records: which functions of the library serve each, and the owners of what they hand out.
#ifndef TARNEL_KINDS_HPP
#define TARNEL_KINDS_HPP

#include <tarnel/request.hpp>

namespace tarnel {

/// The functions of a kind. What the library does not have for a kind is no member, and so does not compile.
template <class Kind>
struct Functions;

/// What every kind has, from its name and that of its list; and the keys that name a record of it to be deleted. The
/// keys but the last are of what it is a part of: they belong to an "update", too.
#define TARNEL_READS(One, ...)                                                                                         \
    static constexpr auto get = ::get##One;                                                                            \
    static constexpr auto free = ::free##One;                                                                          \
    static constexpr auto freeAll = ::free##One##sArray;                                                               \
    static constexpr const char16_t *keys[] = {__VA_ARGS__};
#define TARNEL_LISTS(One)                                                                                              \
    static constexpr auto all = ::get##One##s;                                                                         \
    static constexpr auto where = ::get##One##sWithParams;
#define TARNEL_ADDS(One) static constexpr auto add = ::add##One##s;
#define TARNEL_CHANGES(One)                                                                                            \
    static constexpr auto update = ::update##One;                                                                      \
    static constexpr auto remove = ::delete##One;

template <>
struct Functions<Locale> {
    TARNEL_READS(Locale, u"id")
    TARNEL_LISTS(Locale)
    TARNEL_ADDS(Locale)
};

template <>
struct Functions<Domain> {
    TARNEL_READS(Domain, u"domain_id")
    TARNEL_LISTS(Domain)
    TARNEL_ADDS(Domain)
    TARNEL_CHANGES(Domain)
};

template <>
struct Functions<User> {
    TARNEL_READS(User, u"op_id")
    TARNEL_LISTS(User)
    TARNEL_ADDS(User)
    TARNEL_CHANGES(User)
};

template <>
struct Functions<Organization> {
    TARNEL_READS(Organization, u"org_id")
    TARNEL_LISTS(Organization)
    TARNEL_ADDS(Organization)
    TARNEL_CHANGES(Organization)
};

template <>
struct Functions<Contractor> {
    TARNEL_READS(Contractor, u"id")
    TARNEL_LISTS(Contractor)
    TARNEL_ADDS(Contractor)
    TARNEL_CHANGES(Contractor)
};

template <>
struct Functions<Contract> {
    TARNEL_READS(Contract, u"id")
    TARNEL_LISTS(Contract)
    TARNEL_ADDS(Contract)
    TARNEL_CHANGES(Contract)
};

template <>
struct Functions<Device> {
    TARNEL_READS(Device, u"id")
    TARNEL_LISTS(Device)
    TARNEL_ADDS(Device)
    static constexpr auto addOne = ::addDevice;
    static constexpr auto remove = ::deleteDevice;
};

template <>
struct Functions<Section> {
    TARNEL_READS(Section, u"device", u"section")
    TARNEL_LISTS(Section)
    TARNEL_CHANGES(Section)
};

template <>
struct Functions<Zone> {
    TARNEL_READS(Zone, u"device", u"section", u"zone")
    TARNEL_CHANGES(Zone)

    // Of a device, or of one of its sections.
    static unsigned int all(Zone **zones, unsigned int *count, unsigned int device)
    {
        return getZones(zones, count, device);
    }
    static unsigned int all(Zone **zones, unsigned int *count, unsigned int device, unsigned int section)
    {
        return getZonesForSection(zones, count, device, section);
    }
    static unsigned int where(Zone **zones, unsigned int *count, const unsigned short *field, unsigned int fieldLength,
                              const unsigned short *value, unsigned int valueLength, unsigned int device)
    {
        return getZonesWithParams(zones, count, field, fieldLength, value, valueLength, device);
    }
    static unsigned int where(Zone **zones, unsigned int *count, const unsigned short *field, unsigned int fieldLength,
                              const unsigned short *value, unsigned int valueLength, unsigned int device,
                              unsigned int section)
    {
        return getZonesForSectionWithParams(zones, count, field, fieldLength, value, valueLength, device, section);
    }
};

template <>
struct Functions<Site> {
    TARNEL_READS(Site, u"site_id")
    TARNEL_LISTS(Site)
    TARNEL_ADDS(Site)
    TARNEL_CHANGES(Site)
};

template <>
struct Functions<Event> {
    static constexpr auto add = ::addEvents;
    static constexpr auto addOne = ::addEvent;
    static constexpr auto free = ::freeEvent;
    static constexpr auto freeAll = ::freeEventsArray;
};

#undef TARNEL_READS
#undef TARNEL_LISTS
#undef TARNEL_ADDS
#undef TARNEL_CHANGES

/// A record that the library handed out, and all that its members point to: released with this object. Its members are
/// those of the plain structure; `text`, `utf8`, `value` and `list` read them.
template <class Kind>
class Record
{
public:
    /// Takes over a structure.
    explicit Record(Kind *record) noexcept : m_record(record) {}
    Record(Record &&other) noexcept : m_record(std::exchange(other.m_record, nullptr)) {}
    Record &operator=(Record &&other) noexcept
    {
        std::swap(m_record, other.m_record);
        return *this;
    }
    ~Record()
    {
        if (m_record != nullptr)
            Functions<Kind>::free(m_record);
    }

    [[nodiscard]] const Kind *operator->() const noexcept { return m_record; }
    [[nodiscard]] const Kind &operator*() const noexcept { return *m_record; }

private:
    Kind *m_record;
};

/// A block of records that the library handed out, released with this object.
template <class Kind>
class Records : public List<Kind>
{
public:
    Records() noexcept : Records(nullptr, 0) {}
    /// Takes over a block of structures.
    Records(Kind *records, unsigned int count) noexcept : List<Kind>(records, count), m_records(records) {}
    Records(Records &&other) noexcept : Records() { *this = std::move(other); }
    Records &operator=(Records &&other) noexcept
    {
        std::swap<List<Kind>>(*this, other);
        std::swap(m_records, other.m_records);
        return *this;
    }
    ~Records()
    {
        if (m_records != nullptr)
            Functions<Kind>::freeAll(m_records, this->size());
    }

private:
    Kind *m_records;
};

} // namespace tarnel

#endif
