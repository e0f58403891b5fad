#include "api/families.h"

using tarnelLib::controller::Section;

unsigned int getSection(api::Section **section, unsigned int device, unsigned int id)
{
    return api::getItem<Section>(section, device, id);
}

unsigned int getSections(api::Section **sections, unsigned int *count, unsigned int device)
{
    return api::getItems<Section>(sections, count, device);
}

unsigned int getSectionsWithParams(api::Section **sections, unsigned int *count, const unsigned short *field,
                                   unsigned int fieldLength, const unsigned short *value, unsigned int valueLength,
                                   unsigned int device)
{
    return api::getItemsWithParams<Section>(sections, count, {field, fieldLength}, {value, valueLength}, device);
}

unsigned int updateSection(api::Section **section, const unsigned short *text, unsigned int length)
{
    return api::updateItem<Section>(section, {text, length});
}

unsigned int deleteSection(const unsigned short *text, unsigned int length)
{
    return api::deleteItem<Section>({text, length});
}

unsigned int freeSection(api::Section *section)
{
    return api::freeItems<Section>(section);
}

unsigned int freeSectionsArray(api::Section *sections, unsigned int count)
{
    return api::freeItems<Section>(sections, count);
}
