// The data that `tarnel report` puts into the page, and the records that the page makes of them.

/**
 * A table of the file. Each row has the values of the fields in their order: numbers, texts, or null. A number that has
 * more digits than JavaScript keeps comes as a text.
 * @typedef {object} Table
 * @property {string[]} fields the columns, without the name of the table before them: "Id", "DomainId"
 * @property {number} count the rows in the file
 * @property {number} chosen those that the options of the command leave; the page may hold fewer of them
 * @property {(number|string|null)[][]} rows those in the page
 */

/**
 * What `tarnel check` found, as it says it with --json.
 * @typedef {object} Finding
 * @property {'note'|'suspicious'|'broken'} severity
 * @property {string} subject a table, a column, or "file"
 * @property {number} count
 * @property {string} what
 * @property {string[]} examples identifiers of some of the rows
 */

/**
 * All of it.
 * @typedef {object} Report
 * @property {string} file its name
 * @property {number} made seconds since 1970
 * @property {string} version of the library
 * @property {boolean} redacted whether names, phones and places were masked
 * @property {string[]} limits what the page does not hold, in sentences
 * @property {[number, number]|null} span the first and the last time of the events in the file
 * @property {[string, string][]} facts about the file, each a name and a value
 * @property {Finding[]} findings the worst first
 * @property {Object<string, Table>} tables by their names
 */

/**
 * A row by the names of its fields.
 * @typedef {Object<string, number|string|null>} Row
 */

/** @returns {Report} */
export function readReport() {
    return JSON.parse(document.getElementById('data').textContent);
}

/** @param {Table|undefined} table @returns {Row[]} */
function rowsOf(table) {
    if (!table)
        return [];
    const { fields, rows } = table;
    return rows.map(values => Object.fromEntries(fields.map((field, i) => [field, values[i]])));
}

/** @returns {Map<any, Row[]>} the rows by the value of a field */
function groupBy(rows, field) {
    const groups = new Map();
    for (const row of rows) {
        const group = groups.get(row[field]);
        if (group)
            group.push(row);
        else
            groups.set(row[field], [row]);
    }
    return groups;
}

const byId = rows => new Map(rows.map(row => [row.Id, row]));
const none = [];

/** The records of a report, with what belongs together at hand. */
export class Centre {
    /** @param {Report} report */
    constructor(report) {
        const table = name => rowsOf(report.tables[name]);
        this.report = report;
        this.sites = table('Sites');
        this.devices = table('Devices');
        this.users = table('Users');
        this.contracts = table('Contracts');
        this.site = byId(this.sites);
        this.device = byId(this.devices);
        this.user = byId(this.users);
        this.contract = byId(this.contracts);
        this.domain = byId(table('Domains'));
        this.contractor = byId(table('Contractors'));
        this.organization = byId(table('Organizations'));
        this.location = byId(table('Locations'));
        this.locale = byId(table('Locales'));
        this.sections = groupBy(table('Sections'), 'DeviceId');
        this.zones = groupBy(table('Zones'), 'DeviceId');
        this.deviceUsers = groupBy(table('DeviceUsers'), 'DeviceId');
        this.links = groupBy(table('DeviceUserSectionLinks'), 'DeviceId');
        this.sitesOfDomain = groupBy(this.sites, 'DomainId');
        this.devicesOfDomain = groupBy(this.devices, 'DomainId');
        this.events = table('Events');
        this.#joinEvents();
        this.domainIds = this.#findDomains();
    }

    /** The names that the client shows with an event: those of the rows that it is joined with. */
    #joinEvents() {
        const nameOf = new Map();
        for (const [device, sections] of this.sections) {
            for (const section of sections)
                nameOf.set(`${device} ${section.SectionId}`, section.Name);
        }
        for (const [device, zones] of this.zones) {
            for (const zone of zones)
                nameOf.set(`${device} ${zone.SectionId} ${zone.ZoneId}`, zone.Name);
        }
        for (const event of this.events) {
            const device = this.device.get(event.DeviceId);
            const user = this.user.get(event.UserId);
            event.isListed = device !== undefined;
            event.domainId = device ? device.DomainId : null;
            event.Domain = this.nameOfDomain(event.domainId);
            event.Account = device ? device.Account : null;
            event.Section = nameOf.get(`${event.DeviceId} ${event.SectionId}`) ?? null;
            event.Zone = nameOf.get(`${event.DeviceId} ${event.SectionId} ${event.ZoneId}`) ?? null;
            event.Operator = user ? user.Name : null;
        }
    }

    /** The domains that are stored, or that a site or a device names, in their order; null for none at the end. */
    #findDomains() {
        const ids = new Set([...this.domain.keys(), ...this.sitesOfDomain.keys(), ...this.devicesOfDomain.keys()]);
        const hasNone = ids.delete(null);
        return [...[...ids].sort((left, right) => left - right), ...(hasNone ? [null] : [])];
    }

    /** @returns {string|null} null where there is no domain */
    nameOfDomain(id) {
        if (id === null || id === undefined)
            return null;
        return this.domain.get(id)?.Name ?? `domain ${id}`;
    }

    sectionsOf(device) { return this.sections.get(device) ?? none; }
    zonesOf(device) { return this.zones.get(device) ?? none; }
    deviceUsersOf(device) { return this.deviceUsers.get(device) ?? none; }
    linksOf(device) { return this.links.get(device) ?? none; }
}
