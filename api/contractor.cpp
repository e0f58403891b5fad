#include "api/families.h"

using tarnelLib::controller::Contractor;

unsigned int addContractors(const unsigned short *text, unsigned int length)
{
    return api::addItems<Contractor>({text, length});
}

unsigned int getContractor(api::Contractor **contractor, unsigned int id)
{
    return api::getItem<Contractor>(contractor, id);
}

unsigned int getContractors(api::Contractor **contractors, unsigned int *count)
{
    return api::getItems<Contractor>(contractors, count);
}

unsigned int getContractorsWithParams(api::Contractor **contractors, unsigned int *count, const unsigned short *field,
                                      unsigned int fieldLength, const unsigned short *value, unsigned int valueLength)
{
    return api::getItemsWithParams<Contractor>(contractors, count, {field, fieldLength}, {value, valueLength});
}

unsigned int updateContractor(api::Contractor **contractor, const unsigned short *text, unsigned int length)
{
    return api::updateItem<Contractor>(contractor, {text, length});
}

unsigned int deleteContractor(const unsigned short *text, unsigned int length)
{
    return api::deleteItem<Contractor>({text, length});
}

unsigned int freeContractor(api::Contractor *contractor)
{
    return api::freeItems<Contractor>(contractor);
}

unsigned int freeContractorsArray(api::Contractor *contractors, unsigned int count)
{
    return api::freeItems<Contractor>(contractors, count);
}
