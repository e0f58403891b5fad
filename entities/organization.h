#pragma once

#include "entities/locale.h"

namespace tarnelLib::controller {

/// The contact of an organization; it is written, read and deleted with it.
struct Person {
    quint32 id = 0;
    std::optional<Text> name;
    std::optional<Text> phone;
    std::optional<Text> email;
    std::optional<Text> postal;
};

template <>
struct Schema<Person> {
    using Api = api::Person;
    static constexpr std::string_view table = "Persons";
    static constexpr auto fields = std::tuple{
        Id{"Id", "id", &Person::id, &Api::id, {.deleteKey = "id", .alternativeKey = "id"}},
        Column{"Name", "name", &Person::name, &Api::name},
        Column{"Phone", "phone", &Person::phone, &Api::phone},
        Column{"Email", "email", &Person::email, &Api::email},
        Column{"Postal", "postal", &Person::postal, &Api::postal},
    };
};

/// A legal entity known to the service.
struct Organization {
    quint32 id = 0;
    std::optional<Text> inn;
    std::optional<Text> officialName;
    std::optional<Text> shortName;
    std::optional<Text> kpp;
    std::optional<Text> ogrn;
    std::optional<Text> address;
    std::optional<Person> contact;
    std::optional<quint32> localeId;
};

template <>
struct Schema<Organization> {
    using Api = api::Organization;
    static constexpr std::string_view table = "Organizations";
    static constexpr auto fields = std::tuple{
        Id{"Id", "org_id", &Organization::id, &Api::id, {.deleteKey = "org_id", .alternativeKey = "org_id"}},
        Column{"Inn", "inn", &Organization::inn, &Api::inn},
        Column{"OfficialName", "off_name", &Organization::officialName, &Api::officialName},
        Column{"ShortName", "short_name", &Organization::shortName, &Api::shortName},
        Column{"Kpp", "kpp", &Organization::kpp, &Api::kpp},
        Column{"Ogrn", "ogrn", &Organization::ogrn, &Api::ogrn},
        Reference{"ContactId", "contact", &Organization::contact, &Api::contact, &Person::id, Uncached::Absent},
        Reference{"LocaleId", "locale_id", &Organization::localeId, &Api::locale, &Locale::id, Uncached::Absent},
        Column{"Address", "address_text", &Organization::address, &Api::address},
    };
};

} // namespace tarnelLib::controller
