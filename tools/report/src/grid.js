// A table of records with virtual rows, in which each column can be sorted and filtered.
import { DownloadModule, ExportModule, FilterModule, FormatModule, ResizeColumnsModule, ResizeTableModule, SortModule,
    Tabulator, AccessorModule, InteractionModule } from 'tabulator-tables';
import { element } from './elements.js';
import * as state from './state.js';
import { time } from './texts.js';

Tabulator.registerModule([AccessorModule, DownloadModule, ExportModule, FilterModule, FormatModule, InteractionModule,
    ResizeColumnsModule, ResizeTableModule, SortModule]);

/**
 * @typedef {object} Column
 * @property {string} field
 * @property {string} title
 * @property {'number'|'text'|'time'|'flag'} kind
 * @property {number} [width]
 * @property {(row: object) => Node} [cell] for what is more than its value
 */

const yes = { 0: 'no', 1: 'yes' };
const shown = {
    number: value => String(value),
    text: value => value,
    time,
    flag: value => yes[value] ?? String(value),
};

/** @returns {string} a value as its column shows it */
export const show = (value, kind) => (value === null || value === undefined ? '' : shown[kind](value));

/** A spreadsheet would run such a text; the apostrophe makes it a text there, too. */
const asPlainCell = value => (typeof value === 'string' && /^[=+\-@\t\r]/.test(value) ? `'${value}` : value);

const collator = new Intl.Collator('en', { numeric: true });

/** Absent values are the smallest. */
function compare(left, right) {
    const isLeft = left !== null && left !== undefined;
    const isRight = right !== null && right !== undefined;
    if (!isLeft || !isRight)
        return Number(isLeft) - Number(isRight);
    return typeof left === 'number' && typeof right === 'number' ? left - right : collator.compare(left, right);
}

const hints = { number: 'e.g. 3..7', text: 'contains', time: 'contains', flag: 'yes or no' };

/** The head of a column: what sorts it, and its filter. */
function head(grid, { field, title, kind }) {
    const key = `${grid}.${field}`;
    const input = element('input', { type: 'text', value: state.get(key), placeholder: hints[kind], autocomplete: 'off',
        spellcheck: false, data: { filter: key }, aria: { label: `Filter ${title}` } });
    for (const event of ['click', 'mousedown', 'keydown'])
        input.addEventListener(event, happened => happened.stopPropagation());
    let typing;
    input.addEventListener('input', () => {
        clearTimeout(typing);
        typing = setTimeout(() => state.set({ [key]: input.value }), 150);
    });
    return element('div', { className: 'head' }, element('button', { type: 'button' }, title), input);
}

/** How far below the window a table is made already. */
const ahead = '400px';

export class Grid {
    #rows;
    #table = null;
    #isBuilt = false;
    #test = () => true;

    /**
     * The table itself is made when it comes near the window: most of the time that the page takes at first is theirs.
     * @param {HTMLElement} place
     * @param {string} name by which the address knows its filters
     * @param {Column[]} columns
     * @param {object[]} rows
     * @param {string} label
     */
    constructor(place, name, columns, rows, label) {
        this.#rows = rows;
        const observer = new IntersectionObserver(([{ isIntersecting }]) => {
            if (!isIntersecting)
                return;
            observer.disconnect();
            this.#build(place, name, columns, label);
        }, { rootMargin: ahead });
        observer.observe(place);
        state.onChange(() => {
            for (const input of place.querySelectorAll('[data-filter]')) {
                if (document.activeElement !== input)
                    input.value = state.get(input.dataset.filter);
            }
        });
    }

    #build(place, name, columns, label) {
        const inside = place.appendChild(element('div'));
        this.#table = new Tabulator(inside, {
            data: this.#rows,
            height: '100%',
            layout: 'fitDataFill',
            rowHeight: 30,
            renderVerticalBuffer: 180,
            index: 'Id',
            placeholder: element('span', {}, 'Nothing passes the filters.'),
            initialFilter: [{ field: row => this.#test(row) }],
            columns: columns.map(column => ({
                field: column.field,
                title: column.title,
                width: column.width,
                minWidth: 64,
                cssClass: column.kind === 'text' ? '' : 'figures',
                sorter: compare,
                headerSortTristate: true,
                titleFormatter: () => head(name, column),
                formatter: cell => column.cell?.(cell.getData()) ??
                    element('bdi', {}, show(cell.getValue(), column.kind)),
                accessorDownload: value => asPlainCell(show(value, column.kind)),
                titleDownload: column.title,
            })),
        });
        this.#table.on('tableBuilt', () => {
            this.#isBuilt = true;
            inside.setAttribute('aria-label', label);
            // What scrolls is reached by keys: it is the group of rows then, as a grid has nothing else.
            inside.querySelector('.tabulator-tableholder').setAttribute('role', 'rowgroup');
            inside.querySelector('.tabulator-table').setAttribute('role', 'presentation');
        });
    }

    /** Shows the rows that pass a test. */
    filter(test) {
        this.#test = test;
        if (this.#isBuilt)
            this.#table.refreshFilter();
    }

    /** Shows the values anew, as they read otherwise now. */
    redraw() {
        if (this.#isBuilt)
            this.#table.redraw(true);
    }

    /** @returns {object[]} the rows that are shown, in their order */
    rows() { return this.#isBuilt ? this.#table.getData('active') : this.#rows.filter(this.#test); }

    save(name) { this.#table?.download('csv', name, { bom: true }); }
}
