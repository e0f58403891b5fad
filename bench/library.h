#pragma once

#include "bench/side.h"
#include "tests/client.h"

namespace bench {

/// The library, through its public header alone, on the file "CacheDb" of the current directory.
class Library : public Side
{
public:
    void addEvents(std::u16string_view request, Answers &answers) override;
    void addEvent(std::u16string_view request, Answers &answers) override;
    void getEvents(unsigned int from, unsigned int to, Answers &answers) override;
    void getAffectEvents(Answers &answers) override;
    void clearEventsBeforeDateExceptAffects(unsigned int date) override;
    void addSites(std::u16string_view request) override;
    void getSites(Answers &answers) override;
    void getDevices(Answers &answers) override;
    void getDevice(unsigned int id, Answers &answers) override;
    void getUser(unsigned int id, Answers &answers) override;
    void getLocale(unsigned int id, Answers &answers) override;
    void getSite(unsigned int id, Answers &answers) override;
    void updateUser(std::u16string_view request, Answers &answers) override;

private:
    client::RunningCache m_cache;
};

} // namespace bench
