#pragma once

#include "entities/locale.h"

namespace tarnelLib::controller {

/// The administrative unit to which users, devices and sites belong.
struct Domain {
    quint32 id = 0;
    std::optional<Text> name;
    std::optional<quint32> orgId;
    std::optional<quint32> localeId;
};

template <>
struct Schema<Domain> {
    using Api = api::Domain;
    static constexpr std::string_view table = "Domains";
    static constexpr auto fields = std::tuple{
        Id{"Id", "id", &Domain::id, &Api::id, {.deleteKey = "domain_id", .alternativeKey = "id"}},
        Column{"Name", "name", &Domain::name, &Api::name},
        Column{"OrgId", "org_id", &Domain::orgId, &Api::orgId},
        Reference{"LocaleId", "locale_id", &Domain::localeId, &Api::locale, &Locale::id},
    };
};

} // namespace tarnelLib::controller
