#pragma once

#include "entities/field.h"

#include <tarnel/tarnel.h>

namespace tarnelLib::controller {

/// A detection zone of an alarm device, listed under one of its sections.
struct Zone {
    quint32 id = 0;
    std::optional<Text> name;
    std::optional<quint32> detector;
    std::optional<quint32> physic;
    std::optional<quint32> form;
    std::optional<quint32> flags;
    std::optional<quint32> delay;
    std::optional<quint32> scheduleId;
    std::optional<quint32> tracert;
    std::optional<quint32> uidType;
    std::optional<quint32> arm;
};

template <>
struct Schema<Zone> {
    using Api = api::Zone;
    static constexpr std::string_view table = "Zones";
    static constexpr auto fields = std::tuple{
        ParentKey{"DeviceId", "device"},
        // A zone number is unique within its device: an update can move the zone to another section.
        ParentKey{.field = "SectionId", .requestKey = "section", .isPrimaryKey = false},
        Id{"ZoneId", "id", &Zone::id, &Api::id, {.deleteKey = "zone", .alternativeKey = "zone"}},
        Column{"Name", "name", &Zone::name, &Api::name},
        Column{"Detector", "detector", &Zone::detector, &Api::detector},
        Column{"Physic", "physic", &Zone::physic, &Api::physic},
        Column{"Form", "form", &Zone::form, &Api::form},
        Column{"Flags", "flags", &Zone::flags, &Api::flags},
        Column{"Delay", "delay", &Zone::delay, &Api::delay},
        Column{"ScheduleId", "schedule_id", &Zone::scheduleId, &Api::scheduleId},
        Column{"Tracert", "tracert", &Zone::tracert, &Api::tracert},
        Column{"UidType", "uid_type", &Zone::uidType, &Api::uidType},
        Column{"Arm", "arm", &Zone::arm, &Api::arm},
    };
};

} // namespace tarnelLib::controller
