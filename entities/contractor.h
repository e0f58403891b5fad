#pragma once

#include "entities/field.h"

#include <tarnel/tarnel.h>

namespace tarnelLib::controller {

/// The party with which service contracts are made.
struct Contractor {
    quint32 id = 0;
    std::optional<Text> inn;
    std::optional<quint32> orgId;
    std::optional<quint32> type;
    std::optional<Text> officialName;
    std::optional<Text> name;
    std::optional<Text> extra;
};

template <>
struct Schema<Contractor> {
    using Api = api::Contractor;
    static constexpr std::string_view table = "Contractors";
    static constexpr auto fields = std::tuple{
        Id{"Id", "id", &Contractor::id, &Api::id, {.deleteKey = "id", .alternativeKey = "id"}},
        Column{"Inn", "inn", &Contractor::inn, &Api::inn},
        Column{"OrgId", "org_id", &Contractor::orgId, &Api::orgId},
        Column{"Type", "type", &Contractor::type, &Api::type},
        Column{"OfficialName", "off_name", &Contractor::officialName, &Api::officialName},
        Column{"Name", "name", &Contractor::name, &Api::name},
        Column{"Extra", "extra", &Contractor::extra, &Api::extra},
    };
};

} // namespace tarnelLib::controller
