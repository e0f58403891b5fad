/// @file
/// The cache with every call on its records.
#ifndef TARNEL_CACHE_HPP
#define TARNEL_CACHE_HPP

#include <tarnel/fields.hpp>
#include <tarnel/kinds.hpp>
#include <tarnel/launch.hpp>

#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>

namespace tarnel {

/// How a load goes about its work.
struct Load {
    /// So many records are stored with a call, whole or not at all.
    std::size_t slice = 1000;
    /// Told after each slice how many records are stored; false cancels the load.
    std::function<bool(std::size_t stored)> progress = nullptr;
};

/// How far a load has come: `ok` unless it has failed, also when it was cancelled.
struct [[nodiscard]] Loaded : Result<void> {
    using Result<void>::Result;
    /// So many records, from the first on, are stored; where a reason counts the items of its request, 0 is the next.
    std::size_t stored = 0;
    bool isCancelled = false;
};

/// The name and the address of a site, as far as it has them.
struct NameAndAddress {
    std::optional<std::u16string> name;
    std::optional<std::u16string> address;
};

/// The cache of this process: `start`, calls, `stop`, which its end does, too.
///
/// The calls are those of tarnel.h, which says what each does, and may be made on any thread. `Kind` is a structure,
/// such as `User`; what the library does not have for a kind does not compile. Identifiers are unsigned numbers: those
/// of what a record is part of come first. A request is given as fields, `{user::id(7), user::name("Ada")}`, or as JSON
/// in UTF-8 or UTF-16.
///
/// What is read belongs to the caller and outlives the cache. A range without records is no failure. Nothing throws but
/// the access to the value of a failed result, a number that is out of its field's range (both an `Error`), and a lack
/// of memory.
class Cache : public CacheThread
{
    template <class>
    using Id = unsigned int;

public:
    /// `get<User>(7)`, `get<Section>(device, section)`, `get<Zone>(device, section, zone)`.
    template <class Kind, class... Ids, class = decltype(Functions<Kind>::get(nullptr, Id<Ids>()...))>
    Result<Record<Kind>> get(Ids... ids) const
    {
        return one<Kind>([&](Kind **record) { return Functions<Kind>::get(record, number(ids)...); });
    }

    /// `all<User>()`, `all<Section>(device)`, `all<Zone>(device)`, `all<Zone>(device, section)`.
    template <class Kind, class... Ids, class = decltype(Functions<Kind>::all(nullptr, nullptr, Id<Ids>()...))>
    Result<Records<Kind>> all(Ids... ids) const
    {
        return many<Kind>(
            [&](Kind **records, unsigned int *count) { return Functions<Kind>::all(records, count, number(ids)...); });
    }

    /// The records of which a field, named by its key, equals a value in text: `where<User>("login", login)`. The
    /// identifiers behind them are those of `all`.
    template <class Kind, class... Ids,
              class = decltype(Functions<Kind>::where(nullptr, nullptr, nullptr, 0, nullptr, 0, Id<Ids>()...))>
    Result<Records<Kind>> where(const Text &key, const Text &value, Ids... ids) const
    {
        return many<Kind>([&](Kind **records, unsigned int *count) {
            return Functions<Kind>::where(records, count, key.units(), key.length(), value.units(), value.length(),
                                          number(ids)...);
        });
    }

    /// The same with a field and a value of its type: `where(user::domainId, 5)`, `where(zone::name, "Door", device)`.
    template <class Kind, class Value, class... Ids>
    auto where(const Field<Kind, Value> &field, const typename Field<Kind, Value>::Given &value, Ids... ids) const
        -> decltype(where<Kind>(Text(u""), Text(u""), ids...))
    {
        static_assert(std::is_arithmetic_v<Value> || std::is_same_v<Value, Text>,
                      "nothing is filtered by such a field");
        if constexpr (std::is_same_v<Value, Text>) {
            return where<Kind>(field.key(), value, ids...);
        } else {
            std::u16string decimal;
            value.appendTo(decimal);
            return where<Kind>(field.key(), decimal, ids...);
        }
    }

    /// Stores a list of records. `add<Event>` hands back those of a known device, all others nothing.
    template <class Kind, class Add = decltype(Functions<Kind>::add)>
    auto add(const Text &request) const
    {
        if constexpr (std::is_invocable_v<Add, const unsigned short *, unsigned int>) {
            return Result<void>(Functions<Kind>::add(request.units(), request.length()));
        } else {
            return many<Kind>([&](Kind **records, unsigned int *count) {
                return Functions<Kind>::add(records, count, request.units(), request.length());
            });
        }
    }
    template <class Kind, class = decltype(Functions<Kind>::add)>
    auto add(const std::vector<Fields<Kind>> &records) const
    {
        return add<Kind>(AddRequest<Kind>(records).text());
    }

    /// Stores a device or an event, and hands it back.
    template <class Kind, class = decltype(Functions<Kind>::addOne)>
    Result<Record<Kind>> addOne(const Text &request) const
    {
        return one<Kind>(Functions<Kind>::addOne, request);
    }
    template <class Kind, class = decltype(Functions<Kind>::addOne)>
    Result<Record<Kind>> addOne(const Fields<Kind> &fields) const
    {
        return addOne<Kind>(request(fields));
    }

    /// Changes fields of a record, and hands it back whole.
    template <class Kind, class = decltype(Functions<Kind>::update)>
    Result<Record<Kind>> update(const Text &request) const
    {
        return one<Kind>(Functions<Kind>::update, request);
    }
    /// The same for fields; the identifiers behind them are those of what it is part of:
    /// `update<Section>({section::id(3), section::name("Vault")}, device)`.
    template <class Kind, class... Ids, class = decltype(Functions<Kind>::update)>
    Result<Record<Kind>> update(const Fields<Kind> &fields, Ids... ids) const
    {
        static_assert(sizeof...(Ids) + 1 == std::size(Functions<Kind>::keys), "what it is part of, and nothing else");
        return update<Kind>(request(identified(fields, ids...)));
    }

    /// Sets the configuration version of a device, or none, and hands the device back.
    Result<Record<Device>> updateFirmware(const Text &request) const { return one<Device>(updateDeviceFw, request); }
    Result<Record<Device>> updateFirmware(const Fields<Device> &fields) const
    {
        return updateFirmware(request(fields));
    }

    /// `remove<User>(7)`, `remove<Section>(device, section)`, `remove<Zone>(device, section, zone)`.
    template <class Kind, class... Ids, class = decltype(Functions<Kind>::remove)>
    Result<void> remove(Ids... ids) const
    {
        static_assert(sizeof...(Ids) == std::size(Functions<Kind>::keys), "what it is part of, and its own identifier");
        const Text text = request(identified(Fields<Kind>(), ids...));
        return Functions<Kind>::remove(text.units(), text.length());
    }

    /// Stores a feed of any length in slices: a range of records, each a `Fields<Kind>` or the text of a JSON object.
    template <class Kind, class Range, class = decltype(Functions<Kind>::add)>
    Loaded load(const Range &records, const Load &how = {}) const
    {
        Loaded loaded(TARNEL_SUCCESS);
        AddRequest<Kind> slice;
        for (auto record = std::begin(records); record != std::end(records);) {
            slice.add(*record);
            if (++record != std::end(records) && slice.size() < how.slice)
                continue;
            if (const auto added = add<Kind>(slice.text()); !added.ok()) {
                static_cast<Result<void> &>(loaded) = {added.code(), added.reason()};
                return loaded;
            }
            loaded.stored += slice.size();
            slice.clear();
            if (how.progress && !how.progress(loaded.stored) && record != std::end(records)) {
                loaded.isCancelled = true;
                return loaded;
            }
        }
        return loaded;
    }

    /// The events of a range of time, both ends included, that come from a known device.
    Result<Records<Event>> events(Number<unsigned int> from, Number<unsigned int> to) const
    {
        return many<Event>(
            [&](Event **events, unsigned int *count) { return getEvents(events, count, from.get(), to.get()); });
    }
    Result<Records<Event>> affectEvents() const { return many<Event>(getAffectEvents); }
    /// Takes the flag from an event, and hands the event back.
    Result<Record<Event>> removeAffectFlag(Number<unsigned int> id) const
    {
        return one<Event>(::removeAffectFlag, request(Fields<Event>{event::id(id)}));
    }

    Result<NameAndAddress> siteNameAndAddress(Number<unsigned int> id) const
    {
        unsigned short *name = nullptr;
        unsigned short *address = nullptr;
        if (const unsigned int code = getSiteNameAndAddress(&name, &address, id.get()); code != TARNEL_SUCCESS)
            return Result<void>(code);
        const Malloced nameOwner(name);
        const Malloced addressOwner(address);
        return NameAndAddress{copy(name), copy(address)};
    }

    Result<void> setServerIp(const Text &address) const { return ::setServerIp(address.units(), address.length()); }
    /// Empty if none is set.
    Result<std::u16string> serverIp() const
    {
        unsigned short *address = nullptr;
        if (const unsigned int code = getServerIp(&address); code != TARNEL_SUCCESS)
            return Result<void>(code);
        const Malloced owner(address);
        return std::u16string(text(address));
    }

    Result<void> clearAll() const { return ::clearAll(); }
    Result<void> clearAllExceptEvents() const { return ::clearAllExceptEvents(); }
    Result<void> clearEventsBeforeDateExceptAffects(Number<unsigned int> date) const
    {
        return ::clearEventsBeforeDateExceptAffects(date.get());
    }

private:
    struct Free {
        void operator()(unsigned short *text) const noexcept { std::free(text); }
    };
    using Malloced = std::unique_ptr<unsigned short, Free>;

    static std::optional<std::u16string> copy(const unsigned short *member)
    {
        return member == nullptr ? std::nullopt : std::optional<std::u16string>(text(member));
    }

    static unsigned int number(Number<unsigned int> id) noexcept { return id.get(); }

    /// The fields with the identifiers under the keys that the kind has for them.
    template <class Kind, class... Ids>
    static Fields<Kind> identified(Fields<Kind> fields, Ids... ids)
    {
        [[maybe_unused]] const char16_t *const *key = Functions<Kind>::keys;
        (fields.add(Field<Kind, unsigned int>(*key++)(ids)), ...);
        return fields;
    }

    template <class Kind, class Call>
    static Result<Record<Kind>> one(const Call &call)
    {
        Kind *record = nullptr;
        if (const unsigned int code = call(&record); code != TARNEL_SUCCESS)
            return Result<void>(code);
        return Record<Kind>(record);
    }

    template <class Kind>
    static Result<Record<Kind>> one(unsigned int (*call)(Kind **, const unsigned short *, unsigned int),
                                    const Text &request)
    {
        return one<Kind>([&](Kind **record) { return call(record, request.units(), request.length()); });
    }

    template <class Kind, class Call>
    static Result<Records<Kind>> many(const Call &call)
    {
        Kind *records = nullptr;
        unsigned int count = 0;
        const unsigned int code = call(&records, &count);
        if (code != TARNEL_SUCCESS && code != TARNEL_NOT_FOUND)
            return Result<void>(code);
        return {Records<Kind>(records, count), code};
    }
};

} // namespace tarnel

#endif
