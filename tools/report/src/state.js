// What the person has chosen. It lives in the address, so that a reload, a bookmark and a copied link keep it.

/** The keys of single values; filters of columns are "<grid>.<column>". */
const keys = ['from', 'to', 'class', 'domain', 'device', 'operator', 'show', 'q', 'times', 'theme'];
const isColumn = key => /^[eoc]\.\w+$/.test(key);

/** @type {Object<string, string>} */
let state = {};
const listeners = [];

function read() {
    const given = new URLSearchParams(location.hash.slice(1));
    state = {};
    for (const [key, value] of given) {
        if (value !== '' && (keys.includes(key) || isColumn(key)))
            state[key] = value;
    }
}

const tell = () => listeners.forEach(listener => listener());

/** Calls the listener after each change. */
export function onChange(listener) {
    listeners.push(listener);
}

export function start() {
    read();
    window.addEventListener('hashchange', () => {
        read();
        tell();
    });
}

/** @returns {string} empty if nothing is chosen */
export const get = key => state[key] ?? '';

/** @returns {number|null} */
export function number(key) {
    const value = Number(get(key));
    return get(key) === '' || !Number.isFinite(value) ? null : value;
}

/** Changes some of it; an empty value takes the choice away. */
export function set(changes) {
    for (const [key, value] of Object.entries(changes)) {
        if (value === '' || value === null)
            delete state[key];
        else
            state[key] = String(value);
    }
    const address = `#${new URLSearchParams(state)}`;
    // Replaced, as each letter that is typed into a filter would be a step back otherwise.
    history.replaceState(null, '', address === '#' ? location.pathname + location.search : address);
    tell();
}

/** Takes every filter away; how the page looks stays. */
export function reset() {
    set(Object.fromEntries(Object.keys(state).filter(key => key !== 'times' && key !== 'theme').map(key => [key, ''])));
}
