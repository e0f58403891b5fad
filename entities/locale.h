#pragma once

#include "entities/field.h"

#include <tarnel/tarnel.h>

namespace tarnelLib::controller {

/// A language or regional setting known to the service.
struct Locale {
    quint32 id = 0;
    std::optional<Text> iso;
    std::optional<Text> description;
};

template <>
struct Schema<Locale> {
    using Api = api::Locale;
    static constexpr std::string_view table = "Locales";
    static constexpr auto fields = std::tuple{
        Id{"Id", "id", &Locale::id, &Api::id},
        Column{"Iso", "iso", &Locale::iso, &Api::iso},
        Column{"Description", "description", &Locale::description, &Api::description},
    };
};

} // namespace tarnelLib::controller
