#pragma once

#include "entities/domain.h"

namespace tarnelLib::controller {

/// An operator account of the service.
struct User {
    quint32 id = 0;
    std::optional<Text> name;
    std::optional<Text> login;
    std::optional<Text> contacts;
    std::optional<bool> isActive;
    std::optional<quint32> domainId;
    std::optional<quint32> orgId;
    std::optional<quint64> roles;
    std::optional<quint32> phone;
};

template <>
struct Schema<User> {
    using Api = api::User;
    static constexpr std::string_view table = "Users";
    static constexpr auto fields = std::tuple{
        Id{"Id", "id", &User::id, &Api::id, {.deleteKey = "op_id", .alternativeKey = "id"}},
        Column{"Name", "name", &User::name, &Api::name},
        Column{"Login", "login", &User::login, &Api::login},
        Column{"Contacts", "contacts", &User::contacts, &Api::contacts},
        Column{"IsActive", "active", &User::isActive, &Api::isActive},
        Column{"DomainId", "domain", &User::domainId, &Api::domainId},
        Column{"OrgId", "org", &User::orgId, &Api::orgId},
        Column{"Roles", "roles", &User::roles, &Api::roles},
        Joined{&Api::domain, &User::domainId, &Domain::id},
        Column{"Phone", "phone", &User::phone, &Api::phone, {.sqlType = "DOUBLE"}},
    };
};

} // namespace tarnelLib::controller
