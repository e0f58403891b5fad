// Reads the report, and keeps all parts of the page in step with the filters.
import { Centre, readReport } from './data.js';
import { at, guardMarkup } from './elements.js';
import { columns, EventsGrid } from './events.js';
import { Filters } from './filters.js';
import { showGlance, showTimes } from './glance.js';
import { SiteMap } from './map.js';
import * as palette from './palette.js';
import { makeContracts, makeOperators } from './registers.js';
import { select } from './selection.js';
import * as state from './state.js';
import { areDates, setDates } from './texts.js';
import { Timeline } from './timeline.js';
import { Tree } from './tree.js';
import 'tabulator-tables/dist/css/tabulator.css';
import './page.css';

guardMarkup();
state.start();
const report = readReport();
const centre = new Centre(report);

const couldBeDates = areDates(report.span);
if (!couldBeDates)
    at('times').closest('label').hidden = true;
const readTimes = () => setDates(couldBeDates && state.get('times') !== 'numbers');
readTimes();

palette.setClasses(centre.events);
showGlance(report, examples => {
    state.reset();
    state.set({ 'e.Id': examples.join(',') });
    at('events').scrollIntoView();
});
const filters = new Filters(centre);
const timeline = new Timeline(centre.events);
const events = new EventsGrid(centre.events);
const map = new SiteMap(centre);
const tree = new Tree(centre);
const registers = [makeOperators(centre), makeContracts(centre)];

let times = state.get('times');

function draw() {
    const isReread = times !== state.get('times');
    times = state.get('times');
    readTimes();
    palette.dress();
    const selection = select(centre.events, columns);
    for (const part of [filters, timeline, events, map, tree, ...registers])
        part.draw(selection);
    if (isReread) {
        showTimes(report);
        for (const part of [events, ...registers])
            part.redraw();
    }
}

state.onChange(draw);
palette.onSystemChange(draw);
draw();

// The address is for the filters: a link to a part of the page must not put them out.
document.addEventListener('click', event => {
    const part = event.target.closest?.('[data-jump]')?.dataset.jump;
    if (!part)
        return;
    event.preventDefault();
    at(part).scrollIntoView();
    at(part).tabIndex = -1;
    at(part).focus({ preventScroll: true });
});
document.documentElement.dataset.ready = 'yes';
