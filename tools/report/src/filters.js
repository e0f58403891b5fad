// The filters above the page, which go for all of its parts.
import { at, element } from './elements.js';
import { columns } from './events.js';
import * as palette from './palette.js';
import { chosenClasses } from './selection.js';
import * as state from './state.js';
import { amount, counted, parseTime, time } from './texts.js';

const plain = ['domain', 'show', 'times', 'theme'];
const codeOf = code => (code === null ? 'none' : String(code));

export class Filters {
    #centre;
    #buttons = new Map();

    /** @param {import('./data.js').Centre} centre */
    constructor(centre) {
        this.#centre = centre;
        at('domain').append(...centre.domainIds.map(id => element('option', { value: id === null ? 'none' : String(id) },
            centre.nameOfDomain(id) ?? 'without a domain')));
        for (const key of plain)
            at(key).addEventListener('change', () => state.set({ [key]: at(key).value }));
        for (const key of ['from', 'to'])
            at(key).addEventListener('change', () => this.#takeTime(key));
        let typing;
        at('q').addEventListener('input', () => {
            clearTimeout(typing);
            typing = setTimeout(() => state.set({ q: at('q').value }), 150);
        });
        at('reset').addEventListener('click', () => state.reset());
        at('filters').addEventListener('submit', event => event.preventDefault());
        for (const code of palette.classes()) {
            const button = element('button', { type: 'button', data: { class: codeOf(code) },
                style: `--class: var(${palette.variableOfClass(code)})` });
            button.addEventListener('click', () => this.#toggle(code));
            this.#buttons.set(code, button);
        }
        at('classes').append(...this.#buttons.values());
    }

    #takeTime(key) {
        const typed = at(key).value;
        const value = typed.trim() === '' ? '' : parseTime(typed, key === 'to');
        at(key).setAttribute('aria-invalid', String(value === null));
        at(key).title = value === null ? 'A date as 2026-03-31, with a time or without, or a number is meant' : '';
        if (value !== null)
            state.set({ [key]: value });
    }

    /** One class alone at first, then others with it; all of them are no filter. */
    #toggle(code) {
        const chosen = chosenClasses() ?? new Set();
        if (!chosen.delete(code))
            chosen.add(code);
        const isAll = chosen.size === this.#buttons.size;
        state.set({ class: isAll ? '' : [...chosen].map(codeOf).join(',') });
    }

    /** @param {{count: number, perClass: Map}} selection */
    draw({ count, perClass }) {
        for (const key of plain)
            at(key).value = state.get(key);
        if (document.activeElement !== at('q'))
            at('q').value = state.get('q');
        for (const key of ['from', 'to']) {
            const value = state.number(key);
            at(key).value = value === null ? '' : time(value);
            at(key).setAttribute('aria-invalid', 'false');
        }
        const chosen = chosenClasses();
        for (const [code, button] of this.#buttons) {
            button.setAttribute('aria-pressed', String(chosen !== null && chosen.has(code)));
            button.classList.toggle('off', chosen !== null && !chosen.has(code));
            button.replaceChildren(palette.nameOfClass(code), element('span', {}, amount(perClass.get(code) ?? 0)));
        }
        const { length } = this.#centre.events;
        at('live').textContent = `${amount(count)} of ${counted(length, 'event')}`;
        this.#drawChips();
    }

    /** What was chosen elsewhere on the page, to be taken back here. */
    #drawChips() {
        const chips = ['device', 'operator'].filter(key => state.get(key) !== '')
            .map(key => [key, `${key} ${state.get(key)}`]);
        for (const { field, title } of columns.filter(column => state.get(`e.${column.field}`) !== ''))
            chips.push([`e.${field}`, `${title}: ${state.get(`e.${field}`)}`]);
        at('chips').replaceChildren(...chips.map(([key, text]) => {
            const chip = element('button', { type: 'button', aria: { label: `Remove the filter ${text}` } }, text);
            chip.addEventListener('click', () => state.set({ [key]: '' }));
            return chip;
        }));
    }
}
