#pragma once

#include "api/conversion.h"
#include "parsing/requestparser.h"
#include "runtime/cacheaccess.h"

#include <climits>

/// What the exported functions do, one template for each family of them.
namespace tarnelLib::api {

/// A text as a client passes it.
struct ClientText {
    const unsigned short *units;
    unsigned int length;

    [[nodiscard]] bool isValid() const { return length <= INT_MAX && (units != nullptr || length == 0); }
    [[nodiscard]] std::u16string_view view() const { return {reinterpret_cast<const char16_t *>(units), length}; }
};

/// The one way into the library: takes the lock, refuses when no cache is running, and lets no exception out.
template <class Operation>
unsigned int withController(Operation &&operation) noexcept
{
    Result result = Result::NotAvailable;
    try {
        const CacheAccess access;
        if (controller::Controller *controller = access.controller())
            result = operation(*controller);
    } catch (const std::bad_alloc &) {
        result = Result::AllocationFailed;
    } catch (...) {
        result = Result::NotAvailable;
    }
    return static_cast<unsigned int>(result);
}

/// Where a result can be handed out: the client's pointer is there and null.
template <class Api>
bool isFree(Api *const *out)
{
    return out != nullptr && *out == nullptr;
}

template <class Record>
Result handOut(controller::ApiOf<Record> **out, std::optional<Record> &&record)
{
    if (!record)
        return Result::NotAvailable;
    *out = toApiStruct(std::move(*record));
    return Result::Success;
}

template <class Record>
Result handOut(controller::ApiOf<Record> **out, unsigned int *count, std::vector<Record> &&records)
{
    const auto size = static_cast<unsigned int>(records.size());
    *out = toApiStructs(std::move(records));
    *count = size;
    return Result::Success;
}

template <class Record>
unsigned int addItems(ClientText text) noexcept
{
    return withController([&](controller::Controller &controller) {
        if (!text.isValid())
            return Result::InvalidArgument;
        std::vector<Record> records;
        const Result parsed = controller::parseAddItems(text.view(), records);
        return parsed == Result::Success ? controller.add(records) : parsed;
    });
}

/// Hands the record of the request out as `change` leaves it; that also gets the identifiers of its parents.
template <class Record, class Change>
unsigned int changeItem(controller::ApiOf<Record> **out, ClientText text, Change &&change) noexcept
{
    return withController([&](controller::Controller &controller) {
        if (!isFree(out) || !text.isValid())
            return Result::InvalidArgument;
        std::optional<Record> record;
        controller::ParentIds<Record> parents{};
        const Result parsed = controller::parseAddOrUpdateItem(text.view(), record, parents);
        if (parsed != Result::Success)
            return parsed;
        const Result changed =
            std::apply([&](auto... parent) { return change(controller, record, parent...); }, parents);
        return changed == Result::Success ? handOut(out, std::move(record)) : changed;
    });
}

template <class Record>
unsigned int addItem(controller::ApiOf<Record> **out, ClientText text) noexcept
{
    return changeItem<Record>(out, text,
                              [](auto &controller, std::optional<Record> &record) { return controller.add(record); });
}

template <class Record>
unsigned int addItemsAndHandOut(controller::ApiOf<Record> **out, unsigned int *count, ClientText text) noexcept
{
    return withController([&](controller::Controller &controller) {
        if (!isFree(out) || count == nullptr || !text.isValid())
            return Result::InvalidArgument;
        std::vector<Record> records;
        if (const Result parsed = controller::parseAddItems(text.view(), records); parsed != Result::Success)
            return parsed;
        const Result added = controller.add(records);
        return added == Result::Success ? handOut(out, count, std::move(records)) : added;
    });
}

template <class Record, class... Identifiers>
unsigned int getItem(controller::ApiOf<Record> **out, Identifiers... identifiers) noexcept
{
    return withController([&](controller::Controller &controller) {
        if (!isFree(out))
            return Result::InvalidArgument;
        std::optional<Record> record;
        const Result read = controller.get(record, identifiers...);
        return read == Result::Success ? handOut(out, std::move(record)) : read;
    });
}

/// The numbers are the parents, or a range, as the kind has them.
template <class Record, class... Numbers>
unsigned int getItems(controller::ApiOf<Record> **out, unsigned int *count, Numbers... numbers) noexcept
{
    return withController([&](controller::Controller &controller) {
        if (!isFree(out) || count == nullptr)
            return Result::InvalidArgument;
        std::vector<Record> records;
        const Result read = controller.get(records, numbers...);
        return read == Result::Success ? handOut(out, count, std::move(records)) : read;
    });
}

template <class Record, class... Parents>
unsigned int getItemsWithParams(controller::ApiOf<Record> **out, unsigned int *count, ClientText field,
                                ClientText value, Parents... parents) noexcept
{
    return withController([&](controller::Controller &controller) {
        if (!isFree(out) || count == nullptr || !field.isValid() || !value.isValid())
            return Result::InvalidArgument;
        std::vector<Record> records;
        const Result read = controller.getByField(records, field.view(), value.view(), parents...);
        return read == Result::Success ? handOut(out, count, std::move(records)) : read;
    });
}

template <class Record>
unsigned int updateItem(controller::ApiOf<Record> **out, ClientText text) noexcept
{
    return changeItem<Record>(out, text, [](auto &controller, std::optional<Record> &record, auto... parents) {
        return controller.update(record, parents...);
    });
}

template <class Record>
unsigned int deleteItem(ClientText text) noexcept
{
    return withController([&](controller::Controller &controller) {
        if (!text.isValid())
            return Result::InvalidArgument;
        controller::Identifiers<Record> identifiers{};
        const Result parsed = controller::parseDelete<Record>(text.view(), identifiers);
        if (parsed != Result::Success)
            return parsed;
        return std::apply([&](auto... identifier) { return controller.deleteItem<Record>(identifier...); },
                          identifiers);
    });
}

template <class Record>
unsigned int freeItem(controller::ApiOf<Record> *structure) noexcept
{
    if (structure == nullptr)
        return TARNEL_INVALID_ARGUMENT;
    freeStructure<Record>(*structure);
    std::free(structure);
    return TARNEL_SUCCESS;
}

template <class Record>
unsigned int freeItems(controller::ApiOf<Record> *structures, unsigned int count) noexcept
{
    if (structures == nullptr || count == 0)
        return TARNEL_INVALID_ARGUMENT;
    for (unsigned int i = 0; i < count; ++i)
        freeStructure<Record>(structures[i]);
    std::free(structures);
    return TARNEL_SUCCESS;
}

} // namespace tarnelLib::api
