#pragma once

#include "entities/contract.h"
#include "entities/device.h"

namespace tarnelLib::controller {

/// The coordinates of a site, in degrees; the identifier is the site's.
struct Location {
    quint32 id = 0;
    std::optional<double> latitude;
    std::optional<double> longitude;
};

template <>
struct Schema<Location> {
    using Api = api::Location;
    static constexpr std::string_view table = "Locations";
    static constexpr auto fields = std::tuple{
        Id{"Id", "", &Location::id, &Api::id},
        Column{"Latitude", "lat", &Location::latitude, &Api::latitude},
        Column{"Longitude", "lon", &Location::longitude, &Api::longitude},
    };
};

/// A guarded object: the root of the tree of what is installed there.
struct Site {
    quint32 id = 0;
    std::optional<Text> name;
    std::optional<Text> comment;
    std::optional<Text> extra;
    std::optional<bool> isCrossing;
    std::optional<Text> address;
    std::optional<qint32> contractStatus;
    std::optional<quint32> type;
    std::optional<quint32> category;
    std::optional<quint32> armMode;
    std::optional<bool> isDelegated;
    std::vector<Device> devices; ///< Stored with the site, and not read back with it.
    std::optional<quint32> domainId;
    std::optional<Location> location;
    std::optional<qint32> contractId;
    std::optional<bool> isSitePlanExists;
};

template <>
struct Schema<Site> {
    using Api = api::Site;
    static constexpr std::string_view table = "Sites";
    static constexpr auto fields = std::tuple{
        Id{"Id", "id", &Site::id, &Api::id, {.deleteKey = "site_id", .alternativeKey = "id"}},
        Column{"Name", "name", &Site::name, &Api::name},
        Column{"Comment", "comment", &Site::comment, &Api::comment},
        Column{"Extra", "extra", &Site::extra, &Api::extra},
        Column{"IsCrossing", "is_crossing", &Site::isCrossing, &Api::isCrossing},
        Column{"DomainId", "domain", &Site::domainId, &Api::domainId},
        Column{"Address", "address_text", &Site::address, &Api::address},
        Column{"ContractId", "contract_id", &Site::contractId, &Api::contractId},
        Column{"ContractStatus", "contract_status", &Site::contractStatus, &Api::contractStatus},
        Column{"Type", "type", &Site::type, &Api::type},
        Column{"Category", "category", &Site::category, &Api::category},
        Column{"ArmMode", "arm_mode", &Site::armMode, &Api::armMode},
        Column{"IsDelegated", "delegated", &Site::isDelegated, &Api::isDelegated},
        Column{"IsSitePlanExists", "site_plan", &Site::isSitePlanExists, &Api::isSitePlanExists},
        Attached{"location", &Site::location, &Api::location},
        Joined{&Api::contract, &Site::contractId, &Contract::id, Uncached::Absent},
        Joined{&Api::domain, &Site::domainId, &Domain::id, Uncached::IdentifierAlone, Zero::IsNone},
        Children{"devices", &Site::devices, &Api::devices, &Api::devicesCount},
    };
};

} // namespace tarnelLib::controller
