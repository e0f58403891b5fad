#pragma once

#include "entities/device.h"

namespace tarnelLib::controller {

/// An entry of the alarm and monitoring history.
struct Event {
    quint32 id = 0;
    std::optional<quint32> time;
    std::optional<qint32> deviceId;
    std::optional<quint32> sectionId;
    std::optional<quint32> zoneId;
    std::optional<quint8> active;
    std::optional<quint8> eventClass;
    std::optional<quint8> detector;
    std::optional<quint8> reason;
    std::optional<quint32> localTime;
    std::optional<qint32> channel;
    std::optional<Text> data;
    std::optional<quint32> reviewId;
    std::optional<quint8> reviewState;
    std::optional<quint32> userId;
    std::optional<bool> isClosed;
    std::optional<bool> affect;
    std::optional<Text> jData;
};

template <>
struct Schema<Event> {
    using Api = api::Event;
    static constexpr std::string_view table = "Events";
    static constexpr auto fields = std::tuple{
        Id{"Id", "id", &Event::id, &Api::id, {.deleteKey = "id"}},
        Column{"Time", "time", &Event::time, &Api::time},
        Column{"DeviceId", "device", &Event::deviceId, &Api::deviceId},
        Column{"SectionId", "section", &Event::sectionId, &Api::sectionId},
        Column{"ZoneId", "zone", &Event::zoneId, &Api::zoneId},
        Column{"Active", "active", &Event::active, &Api::active, {.sqlType = "BOOLEAN"}},
        Column{"Class", "class", &Event::eventClass, &Api::eventClass},
        Column{"Detector", "detector", &Event::detector, &Api::detector},
        Column{"Reason", "reason", &Event::reason, &Api::reason},
        Column{"LocalTime", "localtime", &Event::localTime, &Api::localTime},
        Column{"Channel", "channel", &Event::channel, &Api::channel},
        Column{"Data", "data", &Event::data, &Api::data},
        Column{"ReviewId", "review_id", &Event::reviewId, &Api::reviewId},
        Column{"ReviewState", "review_state", &Event::reviewState, &Api::reviewState},
        Column{"UserId", "operator_id", &Event::userId, &Api::userId},
        Column{"IsClosed", "is_closed", &Event::isClosed, &Api::isClosed},
        Column{"Affect", "affect", &Event::affect, &Api::affect},
        Column{"JData", "jdata", &Event::jData, &Api::jData},
        Borrowed{&Api::deviceAccount, &Device::account},
        Borrowed{&Api::sectionName, &Section::name},
        Borrowed{&Api::zoneName, &Zone::name},
        Borrowed{&Api::domainName, &Domain::name}, // The domain of the operator.
    };
};

} // namespace tarnelLib::controller
