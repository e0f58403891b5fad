#include "api/families.h"

using tarnelLib::controller::Organization;

unsigned int addOrganizations(const unsigned short *text, unsigned int length)
{
    return api::addItems<Organization>({text, length});
}

unsigned int getOrganization(api::Organization **organization, unsigned int id)
{
    return api::getItem<Organization>(organization, id);
}

unsigned int getOrganizations(api::Organization **organizations, unsigned int *count)
{
    return api::getItems<Organization>(organizations, count);
}

unsigned int getOrganizationsWithParams(api::Organization **organizations, unsigned int *count,
                                        const unsigned short *field, unsigned int fieldLength,
                                        const unsigned short *value, unsigned int valueLength)
{
    return api::getItemsWithParams<Organization>(organizations, count, {field, fieldLength}, {value, valueLength});
}

unsigned int updateOrganization(api::Organization **organization, const unsigned short *text, unsigned int length)
{
    return api::updateItem<Organization>(organization, {text, length});
}

unsigned int deleteOrganization(const unsigned short *text, unsigned int length)
{
    return api::deleteItem<Organization>({text, length});
}

unsigned int freeOrganization(api::Organization *organization)
{
    return api::freeItems<Organization>(organization);
}

unsigned int freeOrganizationsArray(api::Organization *organizations, unsigned int count)
{
    return api::freeItems<Organization>(organizations, count);
}
