#include "api/families.h"

using tarnelLib::controller::Contract;

unsigned int addContracts(const unsigned short *text, unsigned int length)
{
    return api::addItems<Contract>({text, length});
}

unsigned int getContract(api::Contract **contract, unsigned int id)
{
    return api::getItem<Contract>(contract, id);
}

unsigned int getContracts(api::Contract **contracts, unsigned int *count)
{
    return api::getItems<Contract>(contracts, count);
}

unsigned int getContractsWithParams(api::Contract **contracts, unsigned int *count, const unsigned short *field,
                                    unsigned int fieldLength, const unsigned short *value, unsigned int valueLength)
{
    return api::getItemsWithParams<Contract>(contracts, count, {field, fieldLength}, {value, valueLength});
}

unsigned int updateContract(api::Contract **contract, const unsigned short *text, unsigned int length)
{
    return api::updateItem<Contract>(contract, {text, length});
}

unsigned int deleteContract(const unsigned short *text, unsigned int length)
{
    return api::deleteItem<Contract>({text, length});
}

unsigned int freeContract(api::Contract *contract)
{
    return api::freeItems<Contract>(contract);
}

unsigned int freeContractsArray(api::Contract *contracts, unsigned int count)
{
    return api::freeItems<Contract>(contracts, count);
}
