#include "api/families.h"

using tarnelLib::controller::Event;

unsigned int addEvent(api::Event **event, const unsigned short *text, unsigned int length)
{
    return api::addItem<Event>(event, {text, length});
}

unsigned int addEvents(api::Event **events, unsigned int *count, const unsigned short *text, unsigned int length)
{
    return api::addItemsAndHandOut<Event>(events, count, {text, length});
}

unsigned int getEvents(api::Event **events, unsigned int *count, unsigned int from, unsigned int to)
{
    return api::getItems<Event>(events, count, from, to);
}

unsigned int getAffectEvents(api::Event **events, unsigned int *count)
{
    return api::getItems<Event>(events, count);
}

unsigned int freeEvent(api::Event *event)
{
    return api::freeItems<Event>(event);
}

unsigned int freeEventsArray(api::Event *events, unsigned int count)
{
    return api::freeItems<Event>(events, count);
}

unsigned int removeAffectFlag(api::Event **event, const unsigned short *text, unsigned int length)
{
    using tarnelLib::Result;
    const api::ClientText request(text, length);
    return api::withController([&](auto &controller) {
        if (event == nullptr)
            tarnelLib::diagnostics::note("the output pointer has no address");
        if (event == nullptr || !request.isUsable())
            return Result::InvalidArgument;
        // The request names the event as one to delete would.
        return api::onIdentifiers<Event>(request, [&](const auto &id) {
            tarnelLib::controller::Structures<Event> changed;
            const Result removed = controller.removeAffectFlag(changed, id.front());
            // Other outputs must be null. This one may hold an event: its block alone is released, as clients expect
            // it.
            if (removed == Result::Success)
                std::free(std::exchange(*event, std::move(changed).release()));
            return removed;
        });
    });
}
