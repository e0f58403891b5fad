#include "api/families.h"

using tarnelLib::controller::Domain;

unsigned int addDomains(const unsigned short *text, unsigned int length)
{
    return api::addItems<Domain>({text, length});
}

unsigned int getDomain(api::Domain **domain, unsigned int id)
{
    return api::getItem<Domain>(domain, id);
}

unsigned int getDomains(api::Domain **domains, unsigned int *count)
{
    return api::getItems<Domain>(domains, count);
}

unsigned int getDomainsWithParams(api::Domain **domains, unsigned int *count, const unsigned short *field,
                                  unsigned int fieldLength, const unsigned short *value, unsigned int valueLength)
{
    return api::getItemsWithParams<Domain>(domains, count, {field, fieldLength}, {value, valueLength});
}

unsigned int updateDomain(api::Domain **domain, const unsigned short *text, unsigned int length)
{
    return api::updateItem<Domain>(domain, {text, length});
}

unsigned int deleteDomain(const unsigned short *text, unsigned int length)
{
    return api::deleteItem<Domain>({text, length});
}

unsigned int freeDomain(api::Domain *domain)
{
    return api::freeItems<Domain>(domain);
}

unsigned int freeDomainsArray(api::Domain *domains, unsigned int count)
{
    return api::freeItems<Domain>(domains, count);
}
