#include "bench/library.h"

#include <stdexcept>
#include <string>

namespace bench {

namespace {

void check(unsigned int code)
{
    if (code != TARNEL_SUCCESS)
        throw std::runtime_error("the library answers " + std::to_string(code));
}

const unsigned short *units(std::u16string_view text)
{
    return reinterpret_cast<const unsigned short *>(text.data());
}

unsigned int length(std::u16string_view text)
{
    return static_cast<unsigned int>(text.size());
}

/// Takes the list that `call` hands out.
template <auto freeList, class Api, class Call>
void takeList(Answers &answers, Call call)
{
    Api *records = nullptr;
    unsigned int count = 0;
    check(call(&records, &count));
    answers.take(records, count, [](Api *first, unsigned int size) { check(freeList(first, size)); });
}

/// Takes the record that `call` hands out.
template <auto freeOne, class Api, class Call>
void takeOne(Answers &answers, Call call)
{
    Api *record = nullptr;
    check(call(&record));
    answers.take(record, 1, [](Api *taken, unsigned int) { check(freeOne(taken)); });
}

} // namespace

void Library::addEvents(std::u16string_view request, Answers &answers)
{
    takeList<freeEventsArray, api::Event>(answers, [&](api::Event **events, unsigned int *count) {
        return ::addEvents(events, count, units(request), length(request));
    });
}

void Library::addEvent(std::u16string_view request, Answers &answers)
{
    takeOne<freeEvent, api::Event>(
        answers, [&](api::Event **event) { return ::addEvent(event, units(request), length(request)); });
}

void Library::getEvents(unsigned int from, unsigned int to, Answers &answers)
{
    takeList<freeEventsArray, api::Event>(
        answers, [&](api::Event **events, unsigned int *count) { return ::getEvents(events, count, from, to); });
}

void Library::getAffectEvents(Answers &answers)
{
    takeList<freeEventsArray, api::Event>(answers, ::getAffectEvents);
}

void Library::clearEventsBeforeDateExceptAffects(unsigned int date)
{
    check(::clearEventsBeforeDateExceptAffects(date));
}

void Library::addSites(std::u16string_view request)
{
    check(::addSites(units(request), length(request)));
}

void Library::getSites(Answers &answers)
{
    takeList<freeSitesArray, api::Site>(answers, ::getSites);
}

void Library::getDevices(Answers &answers)
{
    takeList<freeDevicesArray, api::Device>(answers, ::getDevices);
}

void Library::getDevice(unsigned int id, Answers &answers)
{
    takeOne<freeDevice, api::Device>(answers, [&](api::Device **device) { return ::getDevice(device, id); });
}

void Library::getUser(unsigned int id, Answers &answers)
{
    takeOne<freeUser, api::User>(answers, [&](api::User **user) { return ::getUser(user, id); });
}

void Library::getLocale(unsigned int id, Answers &answers)
{
    takeOne<freeLocale, api::Locale>(answers, [&](api::Locale **locale) { return ::getLocale(locale, id); });
}

void Library::getSite(unsigned int id, Answers &answers)
{
    takeOne<freeSite, api::Site>(answers, [&](api::Site **site) { return ::getSite(site, id); });
}

void Library::updateUser(std::u16string_view request, Answers &answers)
{
    takeOne<freeUser, api::User>(answers,
                                 [&](api::User **user) { return ::updateUser(user, units(request), length(request)); });
}

} // namespace bench
