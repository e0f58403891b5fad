#include "api/families.h"

using tarnelLib::controller::Zone;

unsigned int getZone(api::Zone **zone, unsigned int device, unsigned int section, unsigned int id)
{
    return api::getItem<Zone>(zone, device, section, id);
}

unsigned int getZones(api::Zone **zones, unsigned int *count, unsigned int device)
{
    return api::getItems<Zone>(zones, count, device);
}

unsigned int getZonesWithParams(api::Zone **zones, unsigned int *count, const unsigned short *field,
                                unsigned int fieldLength, const unsigned short *value, unsigned int valueLength,
                                unsigned int device)
{
    return api::getItemsWithParams<Zone>(zones, count, {field, fieldLength}, {value, valueLength}, device);
}

unsigned int getZonesForSection(api::Zone **zones, unsigned int *count, unsigned int device, unsigned int section)
{
    return api::getItems<Zone>(zones, count, device, section);
}

unsigned int getZonesForSectionWithParams(api::Zone **zones, unsigned int *count, const unsigned short *field,
                                          unsigned int fieldLength, const unsigned short *value,
                                          unsigned int valueLength, unsigned int device, unsigned int section)
{
    return api::getItemsWithParams<Zone>(zones, count, {field, fieldLength}, {value, valueLength}, device, section);
}

unsigned int updateZone(api::Zone **zone, const unsigned short *text, unsigned int length)
{
    return api::updateItem<Zone>(zone, {text, length});
}

unsigned int deleteZone(const unsigned short *text, unsigned int length)
{
    return api::deleteItem<Zone>({text, length});
}

unsigned int freeZone(api::Zone *zone)
{
    return api::freeItems<Zone>(zone);
}

unsigned int freeZonesArray(api::Zone *zones, unsigned int count)
{
    return api::freeItems<Zone>(zones, count);
}
