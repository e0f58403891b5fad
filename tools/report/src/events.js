// The events, one by one.
import { at, element } from './elements.js';
import { Grid, show } from './grid.js';
import * as palette from './palette.js';
import { ALL } from './selection.js';
import { amount } from './texts.js';

const classCell = ({ Class }) =>
    element('span', { className: 'class-cell', style: `--class: var(${palette.variableOfClass(Class)})` },
        Class === null ? '' : String(Class));

/** @type {import('./grid.js').Column[]} */
export const columns = [
    { field: 'Time', title: 'Time', kind: 'time', width: 164 },
    { field: 'Class', title: 'Class', kind: 'number', width: 84, cell: classCell },
    { field: 'Domain', title: 'Domain', kind: 'text', width: 120 },
    { field: 'Account', title: 'Account', kind: 'number', width: 90 },
    { field: 'Section', title: 'Section', kind: 'text', width: 130 },
    { field: 'Zone', title: 'Zone', kind: 'text', width: 150 },
    { field: 'Data', title: 'Text', kind: 'text', width: 190 },
    { field: 'Operator', title: 'Operator', kind: 'text', width: 150 },
    { field: 'IsClosed', title: 'Closed', kind: 'flag', width: 80 },
    { field: 'Affect', title: 'Affect', kind: 'flag', width: 80 },
    { field: 'Id', title: 'Event', kind: 'number', width: 90 },
    { field: 'DeviceId', title: 'Device', kind: 'number', width: 90 },
    { field: 'SectionId', title: 'Section no.', kind: 'number', width: 100 },
    { field: 'ZoneId', title: 'Zone no.', kind: 'number', width: 90 },
    { field: 'Active', title: 'Active', kind: 'number', width: 80 },
    { field: 'Detector', title: 'Detector', kind: 'number', width: 90 },
    { field: 'Reason', title: 'Reason', kind: 'number', width: 80 },
    { field: 'Channel', title: 'Channel', kind: 'number', width: 90 },
    { field: 'LocalTime', title: 'Local time', kind: 'time', width: 164 },
    { field: 'ReviewId', title: 'Review', kind: 'number', width: 90 },
    { field: 'ReviewState', title: 'Review state', kind: 'number', width: 110 },
    { field: 'UserId', title: 'Operator no.', kind: 'number', width: 110 },
    { field: 'JData', title: 'Further data', kind: 'text', width: 320 },
];

/** Paper has no scroll bar, and nobody reads thousands of lines there. */
const printedEvents = 200;
const printedColumns = columns.slice(0, 8);

export class EventsGrid {
    #grid;

    /** @param {object[]} events */
    constructor(events) {
        events.forEach((event, i) => { event.place = i; });
        this.#grid = new Grid(at('events-grid'), 'e', columns, events, 'Events');
        at('csv').addEventListener('click', () => this.#grid.save('events.csv'));
        window.addEventListener('beforeprint', () => this.#print());
    }

    draw({ passed }) {
        this.#grid.filter(event => passed[event.place] === ALL);
    }

    redraw() { this.#grid.redraw(); }

    #print() {
        const rows = this.#grid.rows();
        const first = rows.slice(0, printedEvents);
        const cells = row => printedColumns.map(({ field, kind }) =>
            element('td', {}, element('bdi', {}, show(row[field], kind))));
        at('print-events').replaceChildren(
            element('caption', {}, `Events: the first ${amount(first.length)} of ${amount(rows.length)}`),
            element('thead', {}, element('tr', {}, ...printedColumns.map(({ title }) => element('th', {}, title)))),
            element('tbody', {}, ...first.map(row => element('tr', {}, ...cells(row)))));
    }
}
