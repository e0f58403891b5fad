#pragma once

#include "entities/contractor.h"
#include "entities/user.h"

namespace tarnelLib::controller {

/// A service agreement with a contractor, and the operator responsible for it.
struct Contract {
    quint32 id = 0;
    std::optional<Text> number;
    std::optional<quint32> contractorId;
    std::optional<Text> name;
    std::optional<quint32> status;
    std::optional<quint32> date;
    std::optional<Text> description;
    std::optional<Text> extra;
    std::optional<quint32> userId;
};

template <>
struct Schema<Contract> {
    using Api = api::Contract;
    static constexpr std::string_view table = "Contracts";
    static constexpr auto fields = std::tuple{
        Id{"Id", "id", &Contract::id, &Api::id, {.deleteKey = "id", .alternativeKey = "id"}},
        Column{"Number", "number", &Contract::number, &Api::number},
        Reference{"ContractorId", "contractor_id", &Contract::contractorId, &Api::contractor, &Contractor::id,
                  Uncached::Absent},
        Column{"Name", "c_name", &Contract::name, &Api::name},
        Column{"Status", "status", &Contract::status, &Api::status},
        Column{"Date", "date", &Contract::date, &Api::date},
        Column{"Description", "description", &Contract::description, &Api::description},
        Column{"Extra", "extra", &Contract::extra, &Api::extra},
        Reference{"UserId", "operator_id", &Contract::userId, &Api::user, &User::id, Uncached::Absent},
    };
};

} // namespace tarnelLib::controller
