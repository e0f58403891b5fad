// The whole at a glance: what there is, what was found, and what the page leaves out.
import { at, element, named } from './elements.js';
import { amount, dateOf, time } from './texts.js';

const tiles = [
    ['Sites', 'sites', 'tree'], ['Devices', 'devices', 'tree'], ['Zones', 'zones', 'tree'],
    ['DeviceUsers', 'device users', 'tree'], ['Users', 'operators', 'operators'],
    ['Contracts', 'contracts', 'contracts'], ['Organizations', 'organizations', null], ['Events', 'events', 'events'],
];

const levels = { note: 'Note', suspicious: 'Suspicious', broken: 'Broken' };

/** @param {import('./data.js').Report} report */
export function showGlance(report, onShow) {
    document.title = `${report.file}: cache report`;
    at('file').replaceChildren(named(report.file));
    at('made').textContent = `Made ${dateOf(report.made)} UTC with TarnelLib ${report.version}` +
        (report.redacted ? '; names, phones and places are masked' : '');
    at('tiles').replaceChildren(...tiles.map(([table, name, part]) => {
        const value = amount(report.tables[table]?.count ?? 0);
        const jump = part ? element('a', { href: `#${part}`, data: { jump: part } }, name) : name;
        return element('div', {}, element('dt', {}, jump), element('dd', { data: { count: table } }, value));
    }));
    const findings = (report.findings ?? []).map(({ level, text, count, show }) => {
        const item = element('li', { className: level }, element('strong', {}, levels[level]),
            element('span', {}, named(text), count === undefined ? '' : ` (${amount(count)})`));
        if (show) {
            const button = element('button', { type: 'button' }, 'Show');
            button.addEventListener('click', () => onShow(show));
            item.append(button);
        }
        return item;
    });
    if (findings.length === 0) {
        const [word, text] = report.findings ? ['Sound', 'Nothing was found.'] : ['–', 'The file was not checked.'];
        findings.push(element('li', { className: report.findings ? 'sound' : 'note' }, element('strong', {}, word),
            element('span', {}, text)));
    }
    at('findings').replaceChildren(...findings);
    showTimes(report);
    at('caps').textContent = report.limits.join(' ');
    at('caps').hidden = report.limits.length === 0;
}

/** The facts, of which the period reads as times are chosen to. */
export function showTimes(report) {
    const period = report.span ? [['Period of the events', `${time(report.span[0])} – ${time(report.span[1])}`]] : [];
    at('facts').replaceChildren(...[...period, ...report.facts].flatMap(([name, value]) =>
        [element('dt', {}, name), element('dd', {}, named(value))]));
}
