#include "api/families.h"

using tarnelLib::Result;
using tarnelLib::controller::Database;

unsigned int setServerIp(const unsigned short *address, unsigned int length)
{
    return api::withController([&](auto &controller) {
        const api::ClientText text{address, length};
        return api::areUsable(text) ? controller.write(Database::setServerIp, text.view()) : Result::InvalidArgument;
    });
}

unsigned int getServerIp(unsigned short **address)
{
    return api::withController([&](auto &controller) {
        if (!api::areUsable(api::Output(address)))
            return Result::InvalidArgument;
        std::optional<tarnelLib::controller::Text> stored;
        const Result read = controller.getServerIp(stored);
        if (read == Result::Success && stored && !stored->view().empty())
            *address = std::move(*stored).release();
        return read;
    });
}

unsigned int clearAll()
{
    return api::withController([](auto &controller) { return controller.write(Database::clearAll); });
}

unsigned int clearAllExceptEvents()
{
    return api::withController([](auto &controller) { return controller.write(Database::clearAllExceptEvents); });
}

unsigned int clearEventsBeforeDateExceptAffects(unsigned int date)
{
    using Events = tarnelLib::controller::Table<tarnelLib::controller::Event>;
    return api::withController(
        [&](auto &controller) { return controller.write(Events::clearBeforeDateExceptAffects, date); });
}
