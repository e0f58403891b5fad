#pragma once

#include "parsing/review.h"
#include "runtime/lifecycle.h"

#include <climits>

/// What the exported functions do, one template for each family of them.
namespace tarnelLib::api {

using controller::Controller;
using runtime::withController;

/// A text as a client passes it, with the name of the exported function that makes one of its arguments.
struct ClientText {
    ClientText(const unsigned short *textUnits, unsigned int textLength, const char *caller = __builtin_FUNCTION())
        : units(textUnits), length(textLength), function(caller)
    {
    }

    /// Notes why, if not.
    [[nodiscard]] bool isUsable(const char *name = "text") const
    {
        if (length > INT_MAX)
            diagnostics::note("the ", name, " is longer than 2147483647 units");
        else if (units == nullptr && length != 0)
            diagnostics::note("the ", name, " is null, and its length is not 0");
        else
            return true;
        return false;
    }
    [[nodiscard]] std::u16string_view view() const { return {reinterpret_cast<const char16_t *>(units), length}; }
    /// As every other reader of texts sees it: some write a mark in front of each.
    [[nodiscard]] std::u16string_view withoutByteOrderMark() const
    {
        return view().substr(view().starts_with(u'\xfeff') ? 1 : 0);
    }

    const unsigned short *units;
    unsigned int length;
    const char *function;
};

/// Where a client wants something handed out, with the name of the exported function.
template <class Api>
struct Output {
    Output(Api **clientPlace, const char *caller = __builtin_FUNCTION()) : place(clientPlace), function(caller) {}

    [[nodiscard]] bool isUsable() const
    {
        if (place != nullptr && *place == nullptr)
            return true;
        diagnostics::note("the output pointer", place == nullptr ? " has no address" : " is not null");
        return false;
    }

    Api **place;
    const char *function;
};
template <class Record>
using OutputOf = Output<controller::ApiOf<Record>>;

struct Count {
    Count(unsigned int *clientPlace) : place(clientPlace) {}

    [[nodiscard]] bool isUsable() const
    {
        if (place == nullptr)
            diagnostics::note("the count pointer is null");
        return place != nullptr;
    }

    unsigned int *place;
};

template <class... Arguments>
bool areUsable(const Arguments &...arguments)
{
    return (arguments.isUsable() && ...);
}

/// Carries out what `parse` makes of a request.
template <class Record, class Parse, class Operation>
Result onRequest(const ClientText &text, controller::Form form, Parse &&parse, Operation &&carryOut)
{
    const bool isToDelete = form == controller::Form::Identifiers;
    const auto &shape = isToDelete ? controller::deletedShapeOf<Record> : controller::shapeOf<Record>;
    const controller::Request request{text.function, text.view(), form, shape};
    controller::Oddities oddities;
    const Result parsed = parse(&oddities);
    if (parsed != Result::Success) {
        controller::noteRefusal(request);
        return parsed;
    }
    const Result result = carryOut();
    const bool isCarriedOut =
        result == Result::Success || result == Result::NotFound || result == Result::ParentNotFound;
    if (oddities.count > 0 && isCarriedOut)
        controller::warnOf(request, oddities);
    return result;
}

/// Hands out what an operation fills, if that is a success.
template <class Record, class Operation>
Result handOut(OutputOf<Record> out, Operation &&fill)
{
    controller::Structures<Record> structures;
    const Result result = fill(structures);
    if (result == Result::Success)
        *out.place = std::move(structures).release();
    return result;
}

/// The same for a list, which has nothing if none is found.
template <class Record, class Operation>
Result handOut(OutputOf<Record> out, Count count, const char *none, Operation &&fill)
{
    return handOut<Record>(out, [&](controller::Structures<Record> &structures) {
        const Result result = fill(structures);
        if (result == Result::Success)
            *count.place = structures.count();
        else if (result == Result::NotFound)
            diagnostics::note(none);
        return result;
    });
}

constexpr const char *noneFound = "there are no such records";

template <class Record>
unsigned int addItems(ClientText text) noexcept
{
    const auto add = [&](Controller &controller) {
        if (!areUsable(text))
            return Result::InvalidArgument;
        std::vector<Record> records;
        return onRequest<Record>(
            text, controller::Form::Items,
            [&](auto *oddities) { return controller::parseAddItems(text.view(), records, oddities); },
            [&] { return controller.add(records); });
    };
    return withController(add, text.function);
}

template <class Record>
unsigned int addItemsAndHandOut(OutputOf<Record> out, Count count, ClientText text) noexcept
{
    const auto add = [&](Controller &controller) {
        if (!areUsable(out, count, text))
            return Result::InvalidArgument;
        std::vector<Record> records;
        const auto fill = [&](auto &stored) { return controller.add(std::move(records), stored); };
        return onRequest<Record>(
            text, controller::Form::Items,
            [&](auto *oddities) { return controller::parseAddItems(text.view(), records, oddities); },
            [&] { return handOut<Record>(out, count, "stored, but none of their devices is in the cache", fill); });
    };
    return withController(add, text.function);
}

/// Hands out what `change` makes of the record of the request; it also gets the identifiers of the record's parents.
template <class Record, class Change>
unsigned int changeItem(OutputOf<Record> out, ClientText text, Change &&change) noexcept
{
    const auto carryOut = [&](Controller &controller) {
        if (!areUsable(out, text))
            return Result::InvalidArgument;
        std::optional<Record> record;
        controller::ParentIds<Record> parents{};
        const auto fill = [&](auto &stored) { return change(controller, *record, parents, stored); };
        return onRequest<Record>(
            text, controller::Form::Record,
            [&](auto *oddities) { return controller::parseAddOrUpdateItem(text.view(), record, parents, oddities); },
            [&] { return handOut<Record>(out, fill); });
    };
    return withController(carryOut, text.function);
}

template <class Record>
unsigned int addItem(OutputOf<Record> out, ClientText text) noexcept
{
    return changeItem<Record>(out, text, [](Controller &controller, const Record &record, const auto &, auto &stored) {
        return controller.add(record, stored);
    });
}

template <class Record>
unsigned int updateItem(OutputOf<Record> out, ClientText text) noexcept
{
    return changeItem<Record>(out, text,
                              [](Controller &controller, const Record &record, const auto &parents, auto &stored) {
                                  return controller.update(record, parents, stored);
                              });
}

template <class Record, class... Numbers>
unsigned int getItem(OutputOf<Record> out, Numbers... identifiers) noexcept
{
    const auto get = [&](Controller &controller) {
        if (!areUsable(out))
            return Result::InvalidArgument;
        return handOut<Record>(out, [&](auto &found) { return controller.getOne(found, {identifiers...}); });
    };
    return withController(get, out.function);
}

/// The numbers are the parents, or a range, as the kind has them.
template <class Record, class... Numbers>
unsigned int getItems(OutputOf<Record> out, Count count, Numbers... numbers) noexcept
{
    const auto get = [&](Controller &controller) {
        if (!areUsable(out, count))
            return Result::InvalidArgument;
        const std::array<quint32, sizeof...(numbers)> all{numbers...};
        return handOut<Record>(out, count, noneFound, [&](auto &found) { return controller.get(found, all); });
    };
    return withController(get, out.function);
}

template <class Record, class... Numbers>
unsigned int getItemsWithParams(OutputOf<Record> out, Count count, ClientText field, ClientText value,
                                Numbers... parents) noexcept
{
    const auto get = [&](Controller &controller) {
        if (!areUsable(out, count) || !field.isUsable("field") || !value.isUsable("value"))
            return Result::InvalidArgument;
        const std::array<quint32, sizeof...(parents)> all{parents...};
        return handOut<Record>(out, count, noneFound, [&](auto &found) {
            return controller.getByField(found, field.withoutByteOrderMark(), value.view(), all);
        });
    };
    return withController(get, out.function);
}

/// Carries out what is to be done with the record that a request names by its identifiers.
template <class Record, class Operation>
Result onIdentifiers(ClientText text, Operation &&carryOut)
{
    controller::Identifiers<Record> identifiers{};
    return onRequest<Record>(
        text, controller::Form::Identifiers,
        [&](auto *oddities) { return controller::parseDelete<Record>(text.view(), identifiers, oddities); },
        [&] { return carryOut(identifiers); });
}

template <class Record>
unsigned int deleteItem(ClientText text) noexcept
{
    const auto remove = [&](Controller &controller) {
        if (!areUsable(text))
            return Result::InvalidArgument;
        return onIdentifiers<Record>(
            text, [&](const auto &identifiers) { return controller.deleteItem<Record>(identifiers); });
    };
    return withController(remove, text.function);
}

template <class Record>
unsigned int freeItems(controller::ApiOf<Record> *structures, unsigned int count = 1,
                       const char *function = __builtin_FUNCTION()) noexcept
{
    if (structures == nullptr || count == 0) {
        diagnostics::note(structures == nullptr ? "the pointer is null" : "the count is 0");
        diagnostics::setReason(function, Result::InvalidArgument);
        return TARNEL_INVALID_ARGUMENT;
    }
    controller::freeStructures<Record>(structures, count);
    return TARNEL_SUCCESS;
}

} // namespace tarnelLib::api

namespace api = tarnelLib::api; // For the files of the kinds.
