#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The records as a server knows them: what goes into requests. A field that is absent is left out of the request.
///
/// Each record names its fields once, in `visit`: with the JSON key and the value, in the order in which they are
/// written. Identifiers count up from `firstId`; `deleteKey` is where a delete request names the record.
namespace generator {

using Text = std::optional<std::u16string>;
using Number = std::optional<std::uint32_t>;
using Signed = std::optional<std::int32_t>;
using Byte = std::optional<std::uint8_t>;
using Flag = std::optional<bool>; ///< Written as 1 and 0: the library reads the JSON value true as false.
using Degrees = std::optional<double>;

struct Locale {
    static constexpr std::uint32_t firstId = 1;

    std::uint32_t id = 0;
    Text iso;
    Text description;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"iso", iso), field(u"description", description);
    }
};

struct Domain {
    static constexpr std::uint32_t firstId = 11;
    static constexpr std::u16string_view deleteKey = u"domain_id";

    std::uint32_t id = 0;
    Text name;
    Number orgId;
    Number localeId;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"name", name), field(u"org_id", orgId), field(u"locale_id", localeId);
    }
};

/// An operator of the service.
struct User {
    static constexpr std::uint32_t firstId = 101;
    static constexpr std::u16string_view deleteKey = u"op_id";

    std::uint32_t id = 0;
    Text name;
    Text login;
    Text contacts;
    Flag isActive;
    Number domainId;
    Number orgId;
    std::optional<std::uint64_t> roles; ///< Below 2^53, which JSON numbers hold exactly.
    Number phone;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"name", name), field(u"login", login), field(u"contacts", contacts);
        field(u"active", isActive), field(u"domain", domainId), field(u"org", orgId), field(u"roles", roles);
        field(u"phone", phone);
    }
};

/// The contact of one organization.
struct Person {
    static constexpr std::uint32_t firstId = 20001;

    std::uint32_t id = 0;
    Text name;
    Text phone;
    Text email;
    Text postal;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"name", name), field(u"phone", phone), field(u"email", email);
        field(u"postal", postal);
    }
};

struct Organization {
    static constexpr std::uint32_t firstId = 1001;
    static constexpr std::u16string_view deleteKey = u"org_id";

    std::uint32_t id = 0;
    Text inn;
    Text officialName;
    Text shortName;
    Text kpp;
    Text ogrn;
    Text address;
    std::optional<Person> contact;
    Number localeId;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"org_id", id), field(u"inn", inn), field(u"off_name", officialName), field(u"short_name", shortName);
        field(u"kpp", kpp), field(u"ogrn", ogrn), field(u"address_text", address), field(u"contact", contact);
        field(u"locale_id", localeId);
    }
};

struct Contractor {
    static constexpr std::uint32_t firstId = 3001;
    static constexpr std::u16string_view deleteKey = u"id";

    std::uint32_t id = 0;
    Text inn;
    Number orgId;
    Number type;
    Text officialName;
    Text name;
    Text extra;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"inn", inn), field(u"org_id", orgId), field(u"type", type);
        field(u"off_name", officialName), field(u"name", name), field(u"extra", extra);
    }
};

struct Contract {
    static constexpr std::uint32_t firstId = 5001;
    static constexpr std::u16string_view deleteKey = u"id";

    std::uint32_t id = 0;
    Text number;
    Number contractorId;
    Text name;
    Number status;
    Number date; ///< Seconds since 1970, UTC.
    Text description;
    Text extra;
    Number operatorId;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"number", number), field(u"contractor_id", contractorId), field(u"c_name", name);
        field(u"status", status), field(u"date", date), field(u"description", description), field(u"extra", extra);
        field(u"operator_id", operatorId);
    }
};

/// A detection zone. Its identifier is unique within its device.
struct Zone {
    std::uint32_t id = 0;
    Text name;
    Number detector; ///< See `Detector`.
    Number physic;
    Number form;
    Number flags;
    Number delay; ///< Seconds from the detection to the alarm.
    Number scheduleId;
    Number tracert;
    Number uidType;
    Number arm;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"name", name), field(u"detector", detector), field(u"physic", physic);
        field(u"form", form), field(u"flags", flags), field(u"delay", delay), field(u"schedule_id", scheduleId);
        field(u"tracert", tracert), field(u"uid_type", uidType), field(u"arm", arm);
    }
};

/// A partition of a device. Its identifier is unique within its device.
struct Section {
    std::uint32_t id = 0;
    Text name;
    Number scheduleId;
    std::vector<Zone> zones;
    Number tracert;
    Number flags;
    Number detector;
    Number arm;
    Number physic;
    Number form;
    Number delay;
    Number uidType;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"name", name), field(u"schedule_id", scheduleId), field(u"zones", zones);
        field(u"tracert", tracert), field(u"flags", flags), field(u"detector", detector), field(u"arm", arm);
        field(u"physic", physic), field(u"form", form), field(u"delay", delay), field(u"uid_type", uidType);
    }
};

/// Somebody who may arm and disarm some of a device's sections.
struct DeviceUser {
    std::uint32_t userIndex = 0;
    Text name;
    Text comment;
    Text phone;
    std::vector<std::uint32_t> sections;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"user_index", userIndex), field(u"name", name), field(u"comment", comment), field(u"phone", phone);
        field(u"sections", sections);
    }
};

struct Device {
    static constexpr std::uint32_t firstId = 100001;
    static constexpr std::u16string_view deleteKey = u"id";

    std::uint32_t id = 0;
    Number account;
    Number configVersion;
    std::vector<Section> sections;
    std::vector<DeviceUser> deviceUsers;
    Flag isParted;
    Number clusterId;
    Number domainId;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"account", account), field(u"config_version", configVersion);
        field(u"sections", sections), field(u"users", deviceUsers), field(u"parted", isParted);
        field(u"cluster_id", clusterId), field(u"domain", domainId);
    }
};

struct Location {
    Degrees latitude;
    Degrees longitude;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"lat", latitude), field(u"lon", longitude);
    }
};

/// A guarded place with the devices installed there.
struct Site {
    static constexpr std::uint32_t firstId = 10001;
    static constexpr std::u16string_view deleteKey = u"site_id";

    std::uint32_t id = 0;
    Text name;
    Text comment;
    Text extra;
    Flag isCrossing;
    Text address;
    Signed contractStatus;
    Number type; ///< Which of the ten sorts of site it is, from 1.
    Number category;
    Number armMode;
    Flag isDelegated;
    std::vector<Device> devices;
    Number domainId;
    std::optional<Location> location;
    Signed contractId;
    Flag isSitePlanExists;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"name", name), field(u"comment", comment), field(u"extra", extra);
        field(u"is_crossing", isCrossing), field(u"address_text", address);
        field(u"contract_status", contractStatus), field(u"type", type), field(u"category", category);
        field(u"arm_mode", armMode), field(u"delegated", isDelegated), field(u"devices", devices);
        field(u"domain", domainId), field(u"location", location), field(u"contract_id", contractId);
        field(u"site_plan", isSitePlanExists);
    }
};

/// What `Event::eventClass` holds.
enum class EventClass : std::uint8_t { Intrusion = 1, Fire, Tamper, MainsLost, Armed, Disarmed, Test, Reconnected };

/// What the detector fields hold.
enum class Detector : std::uint8_t { Motion = 1, FrontDoor, Glass, Smoke, Panic, Water, Temperature, BackDoor };

struct Event {
    static constexpr std::uint32_t firstId = 1;
    static constexpr std::u16string_view deleteKey = u"id"; ///< Where the flag is taken from; events are not deleted.

    std::uint32_t id = 0;
    Number time; ///< Seconds since 1970, UTC.
    Signed deviceId;
    Number sectionId;
    Number zoneId;
    Byte active; ///< 1 begins, 0 is over.
    Byte eventClass;
    Byte detector;
    Byte reason;
    Number localTime; ///< `time` as the clock at the site shows it.
    Signed channel;   ///< 1 and 2 are mobile and wired lines, -1 the spare radio.
    Text data;
    Number reviewId;
    Byte reviewState;
    Number operatorId;
    Flag isClosed;
    Flag affect;
    Text jdata;

    template <class Visitor>
    void visit(Visitor &&field) const
    {
        field(u"id", id), field(u"time", time), field(u"device", deviceId), field(u"section", sectionId);
        field(u"zone", zoneId), field(u"active", active), field(u"class", eventClass), field(u"detector", detector);
        field(u"reason", reason), field(u"localtime", localTime), field(u"channel", channel), field(u"data", data);
        field(u"review_id", reviewId), field(u"review_state", reviewState), field(u"operator_id", operatorId);
        field(u"is_closed", isClosed), field(u"affect", affect), field(u"jdata", jdata);
    }
};

} // namespace generator
