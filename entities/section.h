#pragma once

#include "entities/zone.h"

namespace tarnelLib::controller {

/// A partition of an alarm device, with its zones.
struct Section {
    quint32 id = 0;
    std::optional<Text> name;
    std::optional<quint32> scheduleId;
    std::vector<Zone> zones;
    std::optional<quint32> tracert;
    std::optional<quint32> flags;
    std::optional<quint32> detector;
    std::optional<quint32> arm;
    std::optional<quint32> physic;
    std::optional<quint32> form;
    std::optional<quint32> delay;
    std::optional<quint32> uidType;
};

template <>
struct Schema<Section> {
    using Api = api::Section;
    static constexpr std::string_view table = "Sections";
    static constexpr auto fields = std::tuple{
        ParentKey{"DeviceId", "device"},
        Id{"SectionId", "id", &Section::id, &Api::id, {.deleteKey = "section", .alternativeKey = "section"}},
        Column{"Name", "name", &Section::name, &Api::name},
        Column{"ScheduleId", "schedule_id", &Section::scheduleId, &Api::scheduleId},
        Column{"Tracert", "tracert", &Section::tracert, &Api::tracert},
        Column{"Flags", "flags", &Section::flags, &Api::flags},
        Column{"Detector", "detector", &Section::detector, &Api::detector},
        Column{"Arm", "arm", &Section::arm, &Api::arm},
        Column{"Physic", "physic", &Section::physic, &Api::physic},
        Column{"Form", "form", &Section::form, &Api::form},
        Column{"Delay", "delay", &Section::delay, &Api::delay},
        Column{"UidType", "uid_type", &Section::uidType, &Api::uidType},
        Children{"zones", &Section::zones, &Api::zones, &Api::zonesCount},
    };
};

} // namespace tarnelLib::controller
