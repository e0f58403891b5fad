// Which events pass the filters.
import * as state from './state.js';
import { time } from './texts.js';

/** What an event has passed; all three show it. */
export const PERIOD = 1;
export const CLASS = 2;
export const REST = 4;
export const ALL = 7;

/**
 * The test of a column's filter.
 * @param {string} typed
 * @param {'number'|'text'|'time'|'flag'} kind
 * @returns {(value: any) => boolean}
 */
export function matcher(typed, kind) {
    const text = typed.trim();
    if (text === '–' || text === '-')
        return value => value === null || value === '';
    if (kind === 'number') {
        const ranges = text.split(',').map(range => range.split('..').map(end => (end.trim() === '' ? NaN : Number(end))));
        const holds = (value, [low, high = low]) =>
            !(value < low) && !(value > high) && (!Number.isNaN(low) || !Number.isNaN(high));
        return value => value !== null && ranges.some(range => holds(value, range));
    }
    if (kind === 'flag')
        return value => value !== null && (Number(value) !== 0) === /^(y|1|t)/i.test(text);
    const searched = text.toLocaleLowerCase();
    const shown = kind === 'time' ? time : String;
    return value => value !== null && shown(value).toLocaleLowerCase().includes(searched);
}

const shows = {
    listed: event => event.isListed,
    hidden: event => !event.isListed,
    affect: event => event.Affect === 1,
    open: event => event.IsClosed !== 1,
};

/** @returns {(row: object) => boolean} whether a text that a person types stands in one of the fields */
export function finder(fields) {
    const searched = state.get('q').trim().toLocaleLowerCase();
    if (searched === '')
        return () => true;
    return row => fields.some(field => {
        const value = row[field];
        return value !== null && value !== undefined && String(value).toLocaleLowerCase().includes(searched);
    });
}

/** @returns {(id: number|null) => boolean} */
export function domainTest() {
    const domain = state.get('domain');
    if (domain === '')
        return () => true;
    return id => (domain === 'none' ? id === null || id === undefined : id === Number(domain));
}

/**
 * The tests of a grid's columns.
 * @param {string} grid
 * @param {{field: string, kind: string}[]} columns
 * @returns {(row: object) => boolean}
 */
export function columnTest(grid, columns) {
    const tests = columns
        .filter(({ field }) => state.get(`${grid}.${field}`) !== '')
        .map(({ field, kind }) => [field, matcher(state.get(`${grid}.${field}`), kind)]);
    return row => tests.every(([field, test]) => test(row[field] ?? null));
}

const searchedFields = ['Id', 'Data', 'JData', 'Section', 'Zone', 'Operator', 'Domain', 'Account', 'DeviceId'];

/** @returns {Set<number|null>|null} the classes that are chosen; null for all */
export function chosenClasses() {
    const chosen = state.get('class');
    return chosen === '' ? null : new Set(chosen.split(',').map(code => (code === 'none' ? null : Number(code))));
}

/**
 * Tries all events.
 * @param {object[]} events
 * @param {{field: string, kind: string}[]} columns of the grid
 * @returns {{passed: Uint8Array, count: number, perClass: Map<number|null, number>}} with the number of each class
 *     that would be seen if it was chosen
 */
export function select(events, columns) {
    const from = state.number('from');
    const to = state.number('to');
    const classes = chosenClasses();
    const device = state.number('device');
    const operator = state.number('operator');
    const isInDomain = domainTest();
    const isShown = shows[state.get('show')] ?? (() => true);
    const isFound = finder(searchedFields);
    const isInColumns = columnTest('e', columns);
    const passed = new Uint8Array(events.length);
    const perClass = new Map();
    let count = 0;
    events.forEach((event, i) => {
        const isInPeriod = (from === null || (event.Time !== null && event.Time >= from)) &&
            (to === null || (event.Time !== null && event.Time <= to));
        const isRest = (device === null || event.DeviceId === device) &&
            (operator === null || event.UserId === operator) && isInDomain(event.domainId) && isShown(event) &&
            isInColumns(event) && isFound(event);
        passed[i] = (isInPeriod ? PERIOD : 0) | (isRest ? REST : 0) |
            (classes === null || classes.has(event.Class) ? CLASS : 0);
        if (passed[i] & PERIOD && isRest)
            perClass.set(event.Class, (perClass.get(event.Class) ?? 0) + 1);
        if (passed[i] === ALL)
            ++count;
    });
    return { passed, count, perClass };
}
