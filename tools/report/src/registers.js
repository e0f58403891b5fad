// The operators and the contracts.
import { at, element } from './elements.js';
import { Grid } from './grid.js';
import { columnTest, domainTest, finder } from './selection.js';
import * as state from './state.js';
import { counted } from './texts.js';

/** How many events an operator handled, which leads to them. */
function eventsCell({ Id, Events }) {
    const button = element('button', { type: 'button', className: 'link', aria: { label: `The ${Events} events of operator ${Id}` } },
        String(Events));
    button.addEventListener('click', () => state.set({ operator: Id }));
    return button;
}

const operatorColumns = [
    { field: 'Name', title: 'Name', kind: 'text', width: 160 },
    { field: 'Domain', title: 'Domain', kind: 'text', width: 110 },
    { field: 'IsActive', title: 'Active', kind: 'flag', width: 80 },
    { field: 'Events', title: 'Events', kind: 'number', width: 84, cell: eventsCell },
    { field: 'Login', title: 'Login', kind: 'text', width: 90 },
    { field: 'Contacts', title: 'Contacts', kind: 'text', width: 240 },
    { field: 'Phone', title: 'Phone', kind: 'number', width: 110 },
    { field: 'Organization', title: 'Organization', kind: 'text', width: 180 },
    { field: 'Roles', title: 'Roles', kind: 'number', width: 110 },
    { field: 'Id', title: 'Operator', kind: 'number', width: 90 },
];

const contractColumns = [
    { field: 'Number', title: 'Number', kind: 'text', width: 110 },
    { field: 'Name', title: 'Name', kind: 'text', width: 180 },
    { field: 'Status', title: 'Status', kind: 'number', width: 80 },
    { field: 'Date', title: 'Date', kind: 'time', width: 164 },
    { field: 'Sites', title: 'Sites', kind: 'number', width: 76 },
    { field: 'Operator', title: 'Operator', kind: 'text', width: 150 },
    { field: 'Contractor', title: 'Contractor', kind: 'text', width: 180 },
    { field: 'Description', title: 'Description', kind: 'text', width: 140 },
    { field: 'Extra', title: 'Further', kind: 'text', width: 120 },
    { field: 'Id', title: 'Contract', kind: 'number', width: 90 },
];

/** @returns {Map<any, number>} how many rows have each value of a field */
function count(rows, field) {
    const counts = new Map();
    for (const row of rows)
        counts.set(row[field], (counts.get(row[field]) ?? 0) + 1);
    return counts;
}

/** A table of one kind of record, below its heading with the number of rows. */
class Register {
    constructor(kind, key, columns, rows, label) {
        this.kind = kind;
        this.key = key;
        this.columns = columns;
        this.rows = rows;
        this.grid = new Grid(at(`${kind}-grid`), key, columns, rows, label);
    }

    draw() {
        const isInDomain = domainTest();
        const isInColumns = columnTest(this.key, this.columns);
        const isFound = finder(this.columns.map(({ field }) => field));
        const test = row => isInDomain(row.domainId) && isInColumns(row) && isFound(row);
        this.grid.filter(test);
        at(`${this.kind}-note`).textContent =
            `${this.rows.filter(test).length} of ${counted(this.rows.length, this.kind.slice(0, -1))}`;
    }

    redraw() { this.grid.redraw(); }
}

/** @param {import('./data.js').Centre} centre */
export function makeOperators(centre) {
    const events = count(centre.events, 'UserId');
    const rows = centre.users.map(user => ({
        ...user,
        domainId: user.DomainId,
        Domain: centre.nameOfDomain(user.DomainId),
        Events: events.get(user.Id) ?? 0,
        Organization: centre.organization.get(user.OrgId)?.ShortName ?? null,
    }));
    return new Register('operators', 'o', operatorColumns, rows, 'Operators');
}

/** A contract belongs to the domain of its operator. @param {import('./data.js').Centre} centre */
export function makeContracts(centre) {
    const sites = count(centre.sites, 'ContractId');
    const rows = centre.contracts.map(contract => {
        const contractor = centre.contractor.get(contract.ContractorId);
        const operator = centre.user.get(contract.UserId);
        return {
            ...contract,
            domainId: operator?.DomainId ?? null,
            Sites: sites.get(contract.Id) ?? 0,
            Operator: operator?.Name ?? null,
            Contractor: contractor ? contractor.OfficialName ?? contractor.Name : null,
        };
    });
    return new Register('contracts', 'c', contractColumns, rows, 'Contracts');
}
