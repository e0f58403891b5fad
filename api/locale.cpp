#include "api/families.h"

using tarnelLib::controller::Locale;

unsigned int addLocales(const unsigned short *text, unsigned int length)
{
    return api::addItems<Locale>({text, length});
}

unsigned int getLocale(api::Locale **locale, unsigned int id)
{
    return api::getItem<Locale>(locale, id);
}

unsigned int getLocales(api::Locale **locales, unsigned int *count)
{
    return api::getItems<Locale>(locales, count);
}

unsigned int getLocalesWithParams(api::Locale **locales, unsigned int *count, const unsigned short *field,
                                  unsigned int fieldLength, const unsigned short *value, unsigned int valueLength)
{
    return api::getItemsWithParams<Locale>(locales, count, {field, fieldLength}, {value, valueLength});
}

unsigned int freeLocale(api::Locale *locale)
{
    return api::freeItems<Locale>(locale);
}

unsigned int freeLocalesArray(api::Locale *locales, unsigned int count)
{
    return api::freeItems<Locale>(locales, count);
}
