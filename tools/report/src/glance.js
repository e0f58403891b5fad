// The whole at a glance: what there is, what was found, and what the page leaves out.
import { at, element, named } from './elements.js';
import { amount, dateOf, time } from './texts.js';

const tiles = [
    ['Sites', 'sites', 'tree'], ['Devices', 'devices', 'tree'], ['Zones', 'zones', 'tree'],
    ['DeviceUsers', 'device users', 'tree'], ['Users', 'operators', 'operators'],
    ['Contracts', 'contracts', 'contracts'], ['Organizations', 'organizations', null], ['Events', 'events', 'events'],
];

/** So many findings, the worst, are shown at once. */
const mostFindings = 8;

const severities = { note: 'Note', suspicious: 'Suspicious', broken: 'Broken' };

/** A finding; the events that are its examples can be shown. */
function findingItem({ severity, subject, count, what, examples }, onShow) {
    const all = count > examples.length ? `${examples.join(', ')}, …` : examples.join(', ');
    const item = element('li', { className: severity }, element('strong', {}, severities[severity]),
        element('span', {}, element('b', {}, `${amount(count)} ${subject}`), ': ', named(what),
            examples.length > 0 ? element('span', { className: 'quiet examples' }, named(all)) : null));
    if (subject === 'Events' && examples.length > 0) {
        const label = count > examples.length ? `Show ${examples.length}` : 'Show';
        const button = element('button', { type: 'button', aria: { label: `${label}: ${what}` } }, label);
        button.addEventListener('click', () => onShow(examples));
        item.append(button);
    }
    return item;
}

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
    const findings = report.findings.map(finding => findingItem(finding, onShow));
    if (findings.length === 0)
        findings.push(element('li', { className: 'sound' }, element('strong', {}, 'Sound'),
            element('span', {}, 'Nothing was found.')));
    const rest = findings.splice(mostFindings);
    at('findings').replaceChildren(...findings);
    if (rest.length > 0)
        at('findings').after(element('details', {}, element('summary', {}, `${amount(rest.length)} more`),
            element('ul', { className: 'findings' }, ...rest)));
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
