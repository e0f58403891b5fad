#pragma once

#include "storage/table.h"

/// The tables that a cache has: one for each kind of record.
namespace tarnelLib::controller {

/// The table of a kind, with what is logged when it cannot be created or cleared.
template <class Record>
struct KindTable {
    const char *createMessage;
    const char *clearMessage;
};

/// In the order of creation.
inline constexpr std::tuple tables = {
    KindTable<User>{"create table users error", "clear users error"},
    KindTable<Domain>{"create table domains error", "clear domains error"},
    KindTable<Organization>{"create table orgs error", "clear orgs error"},
    KindTable<Locale>{"create table locales error", "clear locales error"},
    KindTable<Person>{"create table persons error", "clear persons error"},
    KindTable<Contractor>{"create table contractors error", "clear contractors error"},
    KindTable<Contract>{"create table contracts error", "clear contracts error"},
    KindTable<Zone>{"create table zones error", "clear zones error"},
    KindTable<Section>{"create table sections error", "clear sections error"},
    KindTable<Device>{"create table devices error", "clear devices error"},
    KindTable<Location>{"create table locations error", "clear locations error"},
    KindTable<Site>{"create table sites error", "clear sites error"},
    KindTable<DeviceUser>{"create table device users error", "clear deviceUsers error"},
    KindTable<Event>{"create table events error", "clear events error"},
    KindTable<DeviceUserSectionLink>{"create table DeviceUserSectionLinks error",
                                     "clear deviceUsers-section links error"},
};

} // namespace tarnelLib::controller
