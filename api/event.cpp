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
    return api::withController([&](auto &controller) {
        const api::ClientText request{text, length};
        if (event == nullptr || !request.isValid())
            return Result::InvalidArgument;
        // The request names the event as one to delete would.
        tarnelLib::controller::Identifiers<Event> id{};
        const Result parsed = tarnelLib::controller::parseDelete<Event>(request.view(), id);
        if (parsed != Result::Success)
            return parsed;
        tarnelLib::controller::Structures<Event> changed;
        const Result removed = controller.removeAffectFlag(changed, id.front());
        // Other outputs must be null. This one may hold an event: its block alone is released, as clients expect it.
        if (removed == Result::Success)
            std::free(std::exchange(*event, std::move(changed).release()));
        return removed;
    });
}
