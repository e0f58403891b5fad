#pragma once

#include "entities/domain.h"
#include "entities/section.h"

namespace tarnelLib::controller {

/// A person who is programmed into an alarm device, and the sections that the person may operate.
struct DeviceUser {
    quint32 id = 0;
    std::optional<Text> name;
    std::optional<Text> comment;
    std::optional<Text> phone;
    std::vector<quint32> sections; ///< Identifiers; stored as `DeviceUserSectionLink`.
};

template <>
struct Schema<DeviceUser> {
    using Api = api::DeviceUser;
    static constexpr std::string_view table = "DeviceUsers";
    static constexpr auto fields = std::tuple{
        ParentKey{"DeviceId", "device"},
        Id{"DeviceUserId", "user_index", &DeviceUser::id, &Api::id, {.deleteKey = "user_index"}},
        Column{"Name", "name", &DeviceUser::name, &Api::name},
        Column{"Comment", "comment", &DeviceUser::comment, &Api::comment},
        Column{"Phone", "phone", &DeviceUser::phone, &Api::phone},
        Children{"sections", &DeviceUser::sections, &Api::sections, &Api::sectionsCount},
    };
};

/// That a device user may operate a section: nothing but the three identifiers.
struct DeviceUserSectionLink {
};

template <>
struct Schema<DeviceUserSectionLink> {
    static constexpr std::string_view table = "DeviceUserSectionLinks";
    static constexpr auto fields = std::tuple{
        ParentKey{"DeviceId", ""},
        ParentKey{"DeviceUserId", ""},
        ParentKey{"SectionId", ""},
    };
};

/// An alarm device, with all that is programmed into it.
struct Device {
    quint32 id = 0;
    std::optional<quint32> account;
    std::optional<quint32> configVersion;
    std::vector<Section> sections;
    std::vector<DeviceUser> deviceUsers;
    std::optional<bool> isParted;
    std::optional<quint32> clusterId;
    std::optional<quint32> domainId;
};

template <>
struct Schema<Device> {
    using Api = api::Device;
    static constexpr std::string_view table = "Devices";
    static constexpr auto fields = std::tuple{
        Id{"Id", "id", &Device::id, &Api::id, {.deleteKey = "id", .alternativeKey = "id"}},
        Column{"Account", "account", &Device::account, &Api::account},
        Column{"DomainId", "domain", &Device::domainId, &Api::domainId},
        Column{"ConfigVersion", "config_version", &Device::configVersion, &Api::configVersion},
        Column{"IsParted", "parted", &Device::isParted, &Api::isParted},
        // Never a filter: clients rely on the refusal.
        Column{"ClusterId", "cluster_id", &Device::clusterId, &Api::clusterId, {.filter = Filter::Refused}},
        Joined{&Api::domain, &Device::domainId, &Domain::id, Uncached::Absent},
        Children{"sections", &Device::sections, &Api::sections, &Api::sectionsCount},
        Children{"users", &Device::deviceUsers, &Api::deviceUsers, &Api::deviceUsersCount},
    };
};

} // namespace tarnelLib::controller
