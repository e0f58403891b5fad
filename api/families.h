#pragma once

#include "parsing/requestparser.h"
#include "runtime/lifecycle.h"

#include <climits>

/// What the exported functions do, one template for each family of them.
namespace tarnelLib::api {

using controller::Controller;
using runtime::withController;

/// A text as a client passes it.
struct ClientText {
    const unsigned short *units;
    unsigned int length;

    [[nodiscard]] bool isValid() const { return length <= INT_MAX && (units != nullptr || length == 0); }
    [[nodiscard]] std::u16string_view view() const { return {reinterpret_cast<const char16_t *>(units), length}; }
    /// As every other reader of texts sees it: some write a mark in front of each.
    [[nodiscard]] std::u16string_view withoutByteOrderMark() const
    {
        return view().substr(view().starts_with(u'\xfeff') ? 1 : 0);
    }
};

/// Where a result can be handed out: the client's pointer is there and null.
template <class Api>
bool isFree(Api *const *out)
{
    return out != nullptr && *out == nullptr;
}

/// Hands out what an operation fills, if that is a success.
template <class Record, class Operation>
Result handOut(controller::ApiOf<Record> **out, Operation &&fill)
{
    controller::Structures<Record> structures;
    const Result result = fill(structures);
    if (result == Result::Success)
        *out = std::move(structures).release();
    return result;
}

template <class Record, class Operation>
Result handOut(controller::ApiOf<Record> **out, unsigned int *count, Operation &&fill)
{
    return handOut<Record>(out, [&](controller::Structures<Record> &structures) {
        const Result result = fill(structures);
        if (result == Result::Success)
            *count = structures.count();
        return result;
    });
}

template <class Record>
unsigned int addItems(ClientText text) noexcept
{
    return withController([&](Controller &controller) {
        if (!text.isValid())
            return Result::InvalidArgument;
        std::vector<Record> records;
        const Result parsed = controller::parseAddItems(text.view(), records);
        return parsed == Result::Success ? controller.add(records) : parsed;
    });
}

template <class Record>
unsigned int addItemsAndHandOut(controller::ApiOf<Record> **out, unsigned int *count, ClientText text) noexcept
{
    return withController([&](Controller &controller) {
        if (!isFree(out) || count == nullptr || !text.isValid())
            return Result::InvalidArgument;
        std::vector<Record> records;
        if (const Result parsed = controller::parseAddItems(text.view(), records); parsed != Result::Success)
            return parsed;
        return handOut<Record>(out, count, [&](auto &stored) { return controller.add(std::move(records), stored); });
    });
}

/// Hands out what `change` makes of the record of the request; it also gets the identifiers of the record's parents.
template <class Record, class Change>
unsigned int changeItem(controller::ApiOf<Record> **out, ClientText text, Change &&change) noexcept
{
    return withController([&](Controller &controller) {
        if (!isFree(out) || !text.isValid())
            return Result::InvalidArgument;
        std::optional<Record> record;
        controller::ParentIds<Record> parents{};
        const Result parsed = controller::parseAddOrUpdateItem(text.view(), record, parents);
        if (parsed != Result::Success)
            return parsed;
        return handOut<Record>(out, [&](auto &stored) { return change(controller, *record, parents, stored); });
    });
}

template <class Record>
unsigned int addItem(controller::ApiOf<Record> **out, ClientText text) noexcept
{
    return changeItem<Record>(out, text, [](Controller &controller, const Record &record, const auto &, auto &stored) {
        return controller.add(record, stored);
    });
}

template <class Record>
unsigned int updateItem(controller::ApiOf<Record> **out, ClientText text) noexcept
{
    return changeItem<Record>(out, text,
                              [](Controller &controller, const Record &record, const auto &parents, auto &stored) {
                                  return controller.update(record, parents, stored);
                              });
}

template <class Record, class... Numbers>
unsigned int getItem(controller::ApiOf<Record> **out, Numbers... identifiers) noexcept
{
    return withController([&](Controller &controller) {
        if (!isFree(out))
            return Result::InvalidArgument;
        return handOut<Record>(out, [&](auto &found) { return controller.getOne(found, {identifiers...}); });
    });
}

/// The numbers are the parents, or a range, as the kind has them.
template <class Record, class... Numbers>
unsigned int getItems(controller::ApiOf<Record> **out, unsigned int *count, Numbers... numbers) noexcept
{
    return withController([&](Controller &controller) {
        if (!isFree(out) || count == nullptr)
            return Result::InvalidArgument;
        const std::array<quint32, sizeof...(numbers)> all{numbers...};
        return handOut<Record>(out, count, [&](auto &found) { return controller.get(found, all); });
    });
}

template <class Record, class... Numbers>
unsigned int getItemsWithParams(controller::ApiOf<Record> **out, unsigned int *count, ClientText field,
                                ClientText value, Numbers... parents) noexcept
{
    return withController([&](Controller &controller) {
        if (!isFree(out) || count == nullptr || !field.isValid() || !value.isValid())
            return Result::InvalidArgument;
        const std::array<quint32, sizeof...(parents)> all{parents...};
        return handOut<Record>(out, count, [&](auto &found) {
            return controller.getByField(found, field.withoutByteOrderMark(), value.view(), all);
        });
    });
}

template <class Record>
unsigned int deleteItem(ClientText text) noexcept
{
    return withController([&](Controller &controller) {
        if (!text.isValid())
            return Result::InvalidArgument;
        controller::Identifiers<Record> identifiers{};
        const Result parsed = controller::parseDelete<Record>(text.view(), identifiers);
        return parsed == Result::Success ? controller.deleteItem<Record>(identifiers) : parsed;
    });
}

template <class Record>
unsigned int freeItems(controller::ApiOf<Record> *structures, unsigned int count = 1) noexcept
{
    if (structures == nullptr || count == 0)
        return TARNEL_INVALID_ARGUMENT;
    controller::freeStructures<Record>(structures, count);
    return TARNEL_SUCCESS;
}

} // namespace tarnelLib::api

namespace api = tarnelLib::api; // For the files of the kinds.
