// The colours of the page, which page.css has for both themes; charts are told them.
import * as state from './state.js';

/** As many classes as have a colour of their own; the rest share the last one. */
const ownColours = 8;

/** @type {Map<number|null, number>} */
let places = new Map();

/** Gives the classes their colours: to the most frequent ones, in the order of their codes. */
export function setClasses(events) {
    const counts = new Map();
    for (const { Class } of events)
        counts.set(Class, (counts.get(Class) ?? 0) + 1);
    const own = [...counts].sort((left, right) => right[1] - left[1]).slice(0, ownColours).map(([code]) => code);
    const ordered = [...counts.keys()].sort((left, right) => (left ?? Infinity) - (right ?? Infinity));
    places = new Map();
    let next = 1;
    for (const code of ordered)
        places.set(code, own.includes(code) ? next++ : 0);
}

/** @returns {(number|null)[]} all classes that events have, in the order of their codes */
export const classes = () => [...places.keys()];

export const nameOfClass = code => (code === null ? 'no class' : `class ${code}`);

/** @returns {string} the name of the variable that holds the colour */
export const variableOfClass = code => `--class-${places.get(code) ?? 0}`;

export function colour(variable) {
    return getComputedStyle(document.documentElement).getPropertyValue(variable).trim();
}

export const colourOfClass = code => colour(variableOfClass(code));

const system = window.matchMedia('(prefers-color-scheme: dark)');

/** Puts on the theme of the switch, or the system's where the switch leaves it to that. */
export function dress() {
    document.documentElement.dataset.theme = state.get('theme') || (system.matches ? 'dark' : 'light');
}

/** Calls the listener when the system changes its theme. */
export const onSystemChange = listener => system.addEventListener('change', listener);
