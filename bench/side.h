#pragma once

#include "bench/answers.h"

#include <string_view>

namespace bench {

/// The names of the two that are measured.
constexpr const char *librarySide = "library";
constexpr const char *baselineSide = "baseline";

/// One of the two that are measured, with the calls that workloads are made of. Failures are exceptions.
///
/// Requests are the texts that the library takes. What a call hands out goes into the answers.
class Side
{
public:
    Side() = default;
    Side(const Side &) = delete;
    Side &operator=(const Side &) = delete;
    virtual ~Side() = default;

    virtual void addEvents(std::u16string_view request, Answers &answers) = 0;
    virtual void addEvent(std::u16string_view request, Answers &answers) = 0;
    virtual void getEvents(unsigned int from, unsigned int to, Answers &answers) = 0;
    virtual void getAffectEvents(Answers &answers) = 0;
    virtual void clearEventsBeforeDateExceptAffects(unsigned int date) = 0;
    virtual void addSites(std::u16string_view request) = 0;
    virtual void getSites(Answers &answers) = 0;
    virtual void getDevices(Answers &answers) = 0;
    virtual void getDevice(unsigned int id, Answers &answers) = 0;
    virtual void getUser(unsigned int id, Answers &answers) = 0;
    virtual void getLocale(unsigned int id, Answers &answers) = 0;
    virtual void getSite(unsigned int id, Answers &answers) = 0;
    virtual void updateUser(std::u16string_view request, Answers &answers) = 0;
};

} // namespace bench
