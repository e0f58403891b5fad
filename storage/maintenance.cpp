#include "storage/sqlitedatabase.h"

namespace tarnelLib::controller {

bool SQLiteDatabase::setServerIp(std::u16string_view address)
{
    return inTransaction([&] { return run(m_preparer.prepareSetIp(address), "set ip error"); });
}

bool SQLiteDatabase::getServerIp(std::optional<Text> &address)
{
    return readFirst(m_preparer.prepareGetIp(), "get ip error", [&](const Statement &row) {
        if (const std::optional<int> column = row.find("SessionIp"))
            row.read(*column, address);
    });
}

bool SQLiteDatabase::doClearAllExceptEvents()
{
    return run(m_preparer.prepareClear<User>(), "clear users error") &&
           run(m_preparer.prepareClear<Domain>(), "clear domains error") &&
           run(m_preparer.prepareClear<Organization>(), "clear orgs error") &&
           run(m_preparer.prepareClear<Locale>(), "clear locales error") &&
           run(m_preparer.prepareClear<Person>(), "clear persons error") &&
           run(m_preparer.prepareClear<Contractor>(), "clear contractors error") &&
           run(m_preparer.prepareClear<Contract>(), "clear contracts error") &&
           run(m_preparer.prepareClear<Zone>(), "clear zones error") &&
           run(m_preparer.prepareClear<Section>(), "clear sections error") &&
           run(m_preparer.prepareClear<DeviceUser>(), "clear deviceUsers error") &&
           run(m_preparer.prepareClear<DeviceUserSectionLink>(), "clear deviceUsers-section links error") &&
           run(m_preparer.prepareClear<Device>(), "clear devices error") &&
           run(m_preparer.prepareClear<Location>(), "clear locations error") &&
           run(m_preparer.prepareClear<Site>(), "clear sites error");
}

bool SQLiteDatabase::clearAllExceptEvents()
{
    return inTransaction([&] { return doClearAllExceptEvents(); });
}

bool SQLiteDatabase::clearAll()
{
    return inTransaction(
        [&] { return doClearAllExceptEvents() && run(m_preparer.prepareClear<Event>(), "clear events error"); });
}

} // namespace tarnelLib::controller
