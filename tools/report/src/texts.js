// How numbers and times read.

const grouped = new Intl.NumberFormat('en');

/** @returns {string} with thousands apart */
export const amount = number => grouped.format(number);

/** @returns {string} "1 site", "2 sites" */
export const counted = (number, what) => `${amount(number)} ${what}${number === 1 ? '' : 's'}`;

const earliestDate = Date.UTC(2000, 0) / 1000;

/** Whether times that reach so far are taken for seconds since 1970: the file gives them no unit. */
export const areDates = span => span !== null && span[1] >= earliestDate;

export const dateOf = seconds => new Date(seconds * 1000).toISOString().slice(0, 19).replace('T', ' ');

let asDates = true;
export const setDates = isOn => { asDates = isOn; };
export const hasDates = () => asDates;

/** @returns {string} a time as the page shows it */
export function time(value) {
    if (typeof value !== 'number')
        return value === null ? '' : String(value);
    return asDates ? dateOf(value) : String(value);
}

/** @returns {number|null} what a person typed: a date with as much of the time as they care for, or a number */
export function parseTime(text, isEnd = false) {
    const typed = text.trim();
    if (/^\d+$/.test(typed) && (typed.length > 4 || !asDates))
        return Number(typed);
    const parts = /^(\d{4})(?:-(\d\d?)(?:-(\d\d?)(?:[ T](\d\d?)(?::(\d\d?)(?::(\d\d?))?)?)?)?)?Z?$/.exec(typed);
    if (!parts || !asDates)
        return null;
    const given = parts.slice(1).filter(part => part !== undefined).map(Number);
    if (isEnd)
        given[given.length - 1] += 1;
    const [year, month = 1, ...rest] = given;
    const seconds = Date.UTC(year, month - 1, rest[0] ?? 1, ...rest.slice(1)) / 1000 - (isEnd ? 1 : 0);
    return Number.isFinite(seconds) && seconds >= 0 ? seconds : null;
}

/** @returns {string} what is at hand of it, or a dash */
export const orDash = value => (value === null || value === undefined || value === '' ? '–' : String(value));
