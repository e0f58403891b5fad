// Sites and devices below their domains, with what is programmed into the devices. Branches are made when they are opened.
import { at, element, named } from './elements.js';
import { domainTest, finder } from './selection.js';
import * as state from './state.js';
import { amount, counted, orDash } from './texts.js';

/** So many leaves are shown at once; a button brings the next ones. */
const atOnce = 200;

/** A branch that is filled when it is opened for the first time. */
function branch(title, fill, isOpen = false) {
    const details = element('details', {}, element('summary', {}, ...title));
    const onToggle = () => {
        if (!details.open)
            return;
        details.removeEventListener('toggle', onToggle);
        details.append(...fill());
    };
    details.addEventListener('toggle', onToggle);
    details.open = isOpen;
    return details;
}

const quiet = (...texts) => element('span', { className: 'quiet' }, ...texts);

/** A list that grows by a button. */
function list(rows, makeItem) {
    const items = element('ul');
    let next = 0;
    const more = element('button', { type: 'button' });
    const grow = () => {
        const end = Math.min(rows.length, next + atOnce);
        items.append(...rows.slice(next, end).map(row => element('li', {}, makeItem(row))));
        next = end;
        more.textContent = `${amount(rows.length - next)} more`;
        more.hidden = next === rows.length;
    };
    more.addEventListener('click', grow);
    grow();
    return [items, more];
}

/** Names and values, without those that are absent. */
function facts(pairs) {
    const given = pairs.filter(([, value]) => value !== null && value !== undefined && value !== '');
    return element('dl', {}, ...given.flatMap(([name, value]) =>
        [element('dt', {}, name), element('dd', {}, named(String(value)))]));
}

export class Tree {
    #centre;

    /** @param {import('./data.js').Centre} centre */
    constructor(centre) {
        this.#centre = centre;
    }

    draw() {
        const isInDomain = domainTest();
        const isSiteFound = finder(['Id', 'Name', 'Address', 'Comment']);
        const isRowFound = finder(['Name', 'Phone']);
        const isNumberFound = finder(['Id', 'Account']);
        const isDeviceFound = device => isNumberFound(device) || this.#centre.sectionsOf(device.Id).some(isRowFound) ||
            this.#centre.zonesOf(device.Id).some(isRowFound) || this.#centre.deviceUsersOf(device.Id).some(isRowFound);
        const domains = this.#centre.domainIds.filter(isInDomain).map(id => ({
            id,
            sites: (this.#centre.sitesOfDomain.get(id) ?? []).filter(isSiteFound),
            devices: (this.#centre.devicesOfDomain.get(id) ?? []).filter(isDeviceFound),
        })).filter(({ sites, devices }) => state.get('q') === '' || sites.length + devices.length > 0);
        const isOnly = domains.length === 1;
        at('tree-root').replaceChildren(...(domains.length > 0 ? domains.map(domain => this.#domain(domain, isOnly))
            : [element('p', { className: 'quiet' }, 'No site and no device passes the filters.')]));
    }

    #domain({ id, sites, devices }, isOpen) {
        const locale = this.#centre.locale.get(this.#centre.domain.get(id)?.LocaleId);
        return branch([named(this.#centre.nameOfDomain(id) ?? 'Without a domain'),
            quiet(`${counted(sites.length, 'site')}, ${counted(devices.length, 'device')}`,
                locale ? `, ${locale.Iso ?? ''}` : '')],
        () => [
            branch(['Sites ', quiet(String(sites.length))], () => list(sites, site => this.#site(site)), isOpen),
            branch(['Devices ', quiet(String(devices.length))], () => list(devices, device => this.#device(device)), isOpen),
        ], isOpen);
    }

    #site(site) {
        return branch([named(orDash(site.Name)), quiet(named(orDash(site.Address)))], () => {
            const contract = this.#centre.contract.get(site.ContractId);
            const location = this.#centre.location.get(site.Id);
            return [facts([
                ['Site', site.Id], ['Comment', site.Comment], ['Further', site.Extra],
                ['Contract', contract ? `${orDash(contract.Number)}, ${orDash(contract.Name)}`
                    : site.ContractId === null ? 'none' : `${site.ContractId}, not in the file`],
                ['Contract status', site.ContractStatus], ['Type', site.Type], ['Category', site.Category],
                ['Arm mode', site.ArmMode],
                ['Location', location ? `${orDash(location.Latitude)}, ${orDash(location.Longitude)}` : 'none'],
            ])];
        });
    }

    #device(device) {
        const sections = this.#centre.sectionsOf(device.Id);
        const zones = this.#centre.zonesOf(device.Id);
        const users = this.#centre.deviceUsersOf(device.Id);
        return branch([`Account ${orDash(device.Account)}`, quiet(`device ${device.Id}, ` +
            `${counted(sections.length, 'section')}, ${counted(zones.length, 'zone')}, ${counted(users.length, 'user')}`)],
        () => {
            const filter = element('button', { type: 'button' }, 'Its events');
            filter.addEventListener('click', () => state.set({ device: device.Id }));
            const orphans = zones.filter(zone => !sections.some(({ SectionId }) => SectionId === zone.SectionId));
            return [
                filter,
                facts([['Configuration', device.ConfigVersion], ['Cluster', device.ClusterId], ['Parted', device.IsParted]]),
                ...list(sections, section => this.#section(section, zones)),
                ...(orphans.length > 0 ? [branch(['Zones of unknown sections ', quiet(String(orphans.length))],
                    () => list(orphans, zone => this.#zone(zone)))] : []),
                branch(['Users ', quiet(String(users.length))], () => list(users, user => this.#user(user))),
            ];
        });
    }

    #section(section, zones) {
        const own = zones.filter(({ SectionId }) => SectionId === section.SectionId);
        return branch([`${section.SectionId} `, named(orDash(section.Name)), quiet(counted(own.length, 'zone'))],
            () => list(own, zone => this.#zone(zone)));
    }

    #zone(zone) {
        return element('span', {}, `${zone.ZoneId} `, named(orDash(zone.Name)), quiet(`detector ${orDash(zone.Detector)}`));
    }

    #user(user) {
        const sections = this.#centre.linksOf(user.DeviceId).filter(link => link.DeviceUserId === user.DeviceUserId)
            .map(({ SectionId }) => SectionId);
        return element('span', {}, `${user.DeviceUserId} `, named(orDash(user.Name)), quiet(named(orDash(user.Phone)),
            sections.length > 0 ? `, section${sections.length > 1 ? 's' : ''} ${sections.join(', ')}` : ', no section'));
    }
}
