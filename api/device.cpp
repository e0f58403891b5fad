#include "api/families.h"

using tarnelLib::controller::Device;

unsigned int addDevices(const unsigned short *text, unsigned int length)
{
    return api::addItems<Device>({text, length});
}

unsigned int addDevice(api::Device **device, const unsigned short *text, unsigned int length)
{
    return api::addItem<Device>(device, {text, length});
}

unsigned int getDevice(api::Device **device, unsigned int id)
{
    return api::getItem<Device>(device, id);
}

unsigned int getDevices(api::Device **devices, unsigned int *count)
{
    return api::getItems<Device>(devices, count);
}

unsigned int getDevicesWithParams(api::Device **devices, unsigned int *count, const unsigned short *field,
                                  unsigned int fieldLength, const unsigned short *value, unsigned int valueLength)
{
    return api::getItemsWithParams<Device>(devices, count, {field, fieldLength}, {value, valueLength});
}

unsigned int updateDeviceFw(api::Device **device, const unsigned short *text, unsigned int length)
{
    return api::updateItem<Device>(device, {text, length});
}

unsigned int deleteDevice(const unsigned short *text, unsigned int length)
{
    return api::deleteItem<Device>({text, length});
}

unsigned int freeDevice(api::Device *device)
{
    return api::freeItems<Device>(device);
}

unsigned int freeDevicesArray(api::Device *devices, unsigned int count)
{
    return api::freeItems<Device>(devices, count);
}
