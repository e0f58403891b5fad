#include "storage/sqlitedatabase.h"

#include <algorithm>

namespace tarnelLib::controller {

bool SQLiteDatabase::add(const std::vector<Site> &sites)
{
    return inTransaction([&] {
        std::vector<const Device *> devices;
        for (const Site &site : sites) {
            for (const Device &device : site.devices)
                devices.push_back(&device);
        }
        if (!insertAll(std::span(sites), "add sites error") || !doAddDevices(devices))
            return false;
        Batch<Location> locations(*this, "add locations error");
        for (const Site &site : sites) {
            if (site.location)
                locations.add(*site.location);
        }
        return locations.finish();
    });
}

bool SQLiteDatabase::get(std::vector<Site> &sites)
{
    return inTransaction(
        [&] { return readAll(m_preparer.prepareGet<Site>(), sites, "get sites error") && getExtraSiteFields(sites); });
}

bool SQLiteDatabase::get(std::vector<Site> &sites, const ModelField &field, std::u16string_view value)
{
    return inTransaction([&] {
        return readAll(m_preparer.prepareGetByField<Site>(field, value), sites, "get sites by field error") &&
               getExtraSiteFields(sites);
    });
}

bool SQLiteDatabase::doGetSiteById(std::optional<Site> &site, quint32 id)
{
    return readOne(m_preparer.prepareGet<Site>(id), site, "get site by id error") &&
           (!site || getExtraSiteFields({&*site, 1}));
}

bool SQLiteDatabase::get(std::optional<Site> &site, quint32 id)
{
    return inTransaction([&] { return doGetSiteById(site, id); });
}

/// Reads the sites' domains, in one statement. 0 stands for no domain.
bool SQLiteDatabase::getExtraSiteFields(std::span<Site> sites)
{
    std::vector<quint32> identifiers;
    for (const Site &site : sites) {
        if (site.domainId.value_or(0) != 0)
            identifiers.push_back(*site.domainId);
    }
    if (identifiers.empty())
        return true;
    std::ranges::sort(identifiers);
    identifiers.erase(std::unique(identifiers.begin(), identifiers.end()), identifiers.end());

    std::unordered_map<quint32, Domain> domains;
    const bool isRead =
        readEach(m_preparer.prepareGetOfSome<Domain>(identifiers), "get domain error", [&](const Statement &row) {
            Domain domain;
            RowReader::read(row, domain);
            domains.emplace(domain.id, std::move(domain));
        });
    for (Site &site : sites) {
        if (const auto found = domains.find(site.domainId.value_or(0)); found != domains.end())
            site.domain = found->second;
    }
    return isRead;
}

bool SQLiteDatabase::isSiteExists(bool &isExists, quint32 id)
{
    return readExists(m_preparer.prepareIsExists<Site>(id), isExists, "is site exists error");
}

bool SQLiteDatabase::getSiteFields(std::optional<Text> &name, std::optional<Text> &address, quint32 id)
{
    Query query = m_preparer.prepare({QueryPreparer::Verb::Special, &Schema<Site>::table}, [] {
        const sql::Selection fields{.table = Schema<Site>::table,
                                    .columns = {TableModel<Site>::column(&Site::name).column(),
                                                TableModel<Site>::column(&Site::address).column()},
                                    .joins = {}};
        return sql::select(fields) + sql::where(QueryPreparer::firstColumns<Site>(1));
    });
    query->bind(1, id);
    return readFirst(std::move(query), "get site fields error", [&](const Statement &row) {
        row.read(0, name);
        row.read(1, address);
    });
}

/// Devices in the request are not stored: they have updates of their own.
bool SQLiteDatabase::update(std::optional<Site> &site)
{
    return inTransaction([&] {
        const quint32 id = site->id;
        return run(m_preparer.prepareAddOrUpdate(*site), "update site error") &&
               (!site->location || replace(*site->location, "add or update location error")) && doGetSiteById(site, id);
    });
}

bool SQLiteDatabase::deleteSite(quint32 id)
{
    return inTransaction([&] {
        return run(m_preparer.prepareDelete<Location>(id), "delete location error") &&
               run(m_preparer.prepareDelete<Site>(id), "delete site error");
    });
}

} // namespace tarnelLib::controller
