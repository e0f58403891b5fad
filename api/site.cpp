#include "api/families.h"

using tarnelLib::controller::Site;

unsigned int addSites(const unsigned short *text, unsigned int length)
{
    return api::addItems<Site>({text, length});
}

unsigned int getSite(api::Site **site, unsigned int id)
{
    return api::getItem<Site>(site, id);
}

unsigned int getSites(api::Site **sites, unsigned int *count)
{
    return api::getItems<Site>(sites, count);
}

unsigned int getSitesWithParams(api::Site **sites, unsigned int *count, const unsigned short *field,
                                unsigned int fieldLength, const unsigned short *value, unsigned int valueLength)
{
    return api::getItemsWithParams<Site>(sites, count, {field, fieldLength}, {value, valueLength});
}

unsigned int updateSite(api::Site **site, const unsigned short *text, unsigned int length)
{
    return api::updateItem<Site>(site, {text, length});
}

unsigned int deleteSite(const unsigned short *text, unsigned int length)
{
    return api::deleteItem<Site>({text, length});
}

unsigned int freeSite(api::Site *site)
{
    return api::freeItems<Site>(site);
}

unsigned int freeSitesArray(api::Site *sites, unsigned int count)
{
    return api::freeItems<Site>(sites, count);
}

unsigned int getSiteNameAndAddress(unsigned short **name, unsigned short **address, unsigned int id)
{
    using tarnelLib::Result;
    return api::withController([&](auto &controller) {
        if (!api::areUsable(api::Output(name), api::Output(address)))
            return Result::InvalidArgument;
        tarnelLib::controller::SiteFields fields;
        const Result read = controller.getSiteFields(fields, id);
        if (read == Result::Success) {
            *name = tarnelLib::controller::toMember(std::move(fields.name));
            *address = tarnelLib::controller::toMember(std::move(fields.address));
        }
        return read;
    });
}
