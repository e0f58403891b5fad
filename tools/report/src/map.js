// The sites where they lie, without a map beneath: near ones as a cluster, in the colour of what happened last.
import { ScatterChart } from 'echarts/charts';
import { DataZoomInsideComponent, GridComponent, TooltipComponent } from 'echarts/components';
import * as echarts from 'echarts/core';
import { at, element, named } from './elements.js';
import * as palette from './palette.js';
import { degrees, graticule, isPlace, latitudeOf, metresAt, roundBelow, upOf } from './projection.js';
import { ALL, domainTest, finder } from './selection.js';
import * as state from './state.js';
import { amount, counted, orDash, time } from './texts.js';

echarts.use([ScatterChart, DataZoomInsideComponent, GridComponent, TooltipComponent]);

/** Sites that are nearer to each other than this many pixels are one cluster. */
const clusterSize = 44;
const margin = { left: 46, right: 12, top: 12, bottom: 28 };
/** The map shows no less than this, in degrees. */
const leastExtent = 0.002;

/** @returns {Map<number|null, object>} the last event of each domain among those that pass */
export function lastEvents(events, passed) {
    const last = new Map();
    events.forEach((event, i) => {
        if (passed[i] === ALL && event.isListed && (last.get(event.domainId)?.Time ?? -1) <= (event.Time ?? -1))
            last.set(event.domainId, event);
    });
    return last;
}

const later = (left, right) => ((right?.Time ?? -1) > (left?.Time ?? -1) ? right : left);

export class SiteMap {
    #centre;
    #chart = echarts.init(at('map-chart'), null, { renderer: 'canvas' });
    #places;
    #shown = [];
    #last = new Map();
    #domain = '';
    /** What the frame shows: its middle, and degrees per pixel. */
    #view = null;

    /** @param {import('./data.js').Centre} centre */
    constructor(centre) {
        this.#centre = centre;
        this.#places = centre.sites.filter(site => isPlace(centre.location.get(site.Id))).map(site => {
            const { Latitude, Longitude } = centre.location.get(site.Id);
            return { site, x: Longitude, y: upOf(Latitude), Name: site.Name, Address: site.Address, Id: site.Id };
        });
        this.#chart.on('click', ({ data }) => this.#open(data.members));
        this.#watch();
        new ResizeObserver(() => {
            this.#chart.resize();
            this.#paint();
        }).observe(at('map-chart'));
        for (const button of document.querySelectorAll('[data-map]'))
            button.addEventListener('click', () => this.#zoom({ in: 0.5, out: 2, all: 0 }[button.dataset.map]));
    }

    #watch() {
        const area = at('map-chart');
        area.addEventListener('wheel', event => {
            // Whoever scrolls the page does not mean the map, unless it was chosen.
            if (!event.ctrlKey && document.activeElement !== area)
                return;
            event.preventDefault();
            this.#zoom(event.deltaY > 0 ? 1.25 : 0.8, [event.offsetX, event.offsetY]);
        }, { passive: false });
        area.addEventListener('keydown', event => {
            const act = { '+': () => this.#zoom(0.5), '-': () => this.#zoom(2), 0: () => this.#zoom(0),
                ArrowLeft: () => this.#shift(-60, 0), ArrowRight: () => this.#shift(60, 0),
                ArrowUp: () => this.#shift(0, 60), ArrowDown: () => this.#shift(0, -60) }[event.key];
            if (!act || event.ctrlKey || event.altKey || event.metaKey)
                return;
            event.preventDefault();
            act();
        });
        let held = null;
        area.addEventListener('pointerdown', event => { held = [event.clientX, event.clientY]; });
        window.addEventListener('pointerup', () => { held = null; });
        window.addEventListener('pointermove', event => {
            if (!held)
                return;
            const moved = [event.clientX - held[0], event.clientY - held[1]];
            held = [event.clientX, event.clientY];
            this.#shift(-moved[0], moved[1]);
        });
    }

    /** Moves the view by pixels, to the east and upwards. */
    #shift(east, up) {
        if (!this.#view)
            return;
        this.#view.x += east * this.#view.scale;
        this.#view.y += up * this.#view.scale;
        this.#paint();
    }

    get #frame() {
        return { width: Math.max(40, this.#chart.getWidth() - margin.left - margin.right),
            height: Math.max(40, this.#chart.getHeight() - margin.top - margin.bottom) };
    }

    /** The view that shows some places, with some room around. */
    #viewOf(places) {
        const xs = places.map(({ x }) => x);
        const ys = places.map(({ y }) => y);
        const [left, right] = [Math.min(...xs), Math.max(...xs)];
        const [low, high] = [Math.min(...ys), Math.max(...ys)];
        const { width, height } = this.#frame;
        const scale = Math.max((right - left) / (width * 0.84), (high - low) / (height * 0.84), leastExtent / width);
        return { x: (left + right) / 2, y: (low + high) / 2, scale };
    }

    /** Nearer or farther around a point of the frame; 0 for all of it. */
    #zoom(factor, point = null) {
        if (!this.#view)
            return;
        if (factor === 0) {
            this.#view = null;
        } else {
            const { width, height } = this.#frame;
            const fromMiddle = point ? [point[0] - margin.left - width / 2, margin.top + height / 2 - point[1]] : [0, 0];
            const scale = Math.min(360 / width, Math.max(leastExtent / width, this.#view.scale * factor));
            this.#view.x += fromMiddle[0] * (this.#view.scale - scale);
            this.#view.y += fromMiddle[1] * (this.#view.scale - scale);
            this.#view.scale = scale;
        }
        this.#paint();
    }

    #clusters() {
        const cells = new Map();
        const size = clusterSize * this.#view.scale;
        for (const place of this.#shown) {
            const key = `${Math.floor(place.x / size)} ${Math.floor(place.y / size)}`;
            if (cells.has(key))
                cells.get(key).push(place);
            else
                cells.set(key, [place]);
        }
        // Two cells may have their sites on either side of the line between them.
        const clusters = [];
        for (const members of cells.values()) {
            const x = members.reduce((sum, place) => sum + place.x, 0) / members.length;
            const y = members.reduce((sum, place) => sum + place.y, 0) / members.length;
            const near = clusters.find(other => Math.hypot(other.x - x, other.y - y) < size * 0.8);
            if (near)
                near.members.push(...members);
            else
                clusters.push({ x, y, members });
        }
        return clusters;
    }

    #stateOf(members) {
        return members.map(({ site }) => this.#last.get(site.DomainId)).reduce(later, undefined);
    }

    /** Shows what stands behind a point: a site, or a cluster's part of the map. */
    #open(members) {
        if (members.length > 1) {
            const view = this.#viewOf(members);
            if (view.scale < this.#view.scale * 0.95) {
                this.#view = view;
                this.#paint();
            }
        }
        this.#tell(members);
    }

    /** @param {object[]} members */
    #tell(members) {
        const shown = members.slice(0, 6).map(({ site }) => {
            const last = this.#last.get(site.DomainId);
            const domain = this.#centre.nameOfDomain(site.DomainId);
            return element('article', {},
                element('h3', {}, named(orDash(site.Name))),
                element('p', {}, named(orDash(site.Address))),
                element('p', { className: 'quiet' }, `Site ${site.Id}, domain `, named(orDash(domain)), last
                    ? `; last event there ${palette.nameOfClass(last.Class)}, ${time(last.Time)}: ` : '; no event there',
                last ? named(orDash(last.Data)) : null));
        });
        if (members.length > shown.length)
            shown.push(element('p', { className: 'quiet' }, `and ${counted(members.length - shown.length, 'more site')}.`));
        at('map-details').replaceChildren(...shown);
    }

    /** @param {{passed: Uint8Array}} selection */
    draw({ passed }) {
        const isInDomain = domainTest();
        const isFound = finder(['Id', 'Name', 'Address']);
        const domain = state.get('domain');
        this.#last = lastEvents(this.#centre.events, passed);
        const isNamed = this.#places.filter(isFound);
        const shown = (isNamed.length > 0 ? isNamed : this.#places).filter(({ site }) => isInDomain(site.DomainId));
        if (domain !== this.#domain)
            this.#view = null;
        this.#domain = domain;
        this.#shown = shown;
        const without = this.#centre.sites.filter(({ DomainId }) => isInDomain(DomainId)).length -
            this.#places.filter(({ site }) => isInDomain(site.DomainId)).length;
        at('map-note').textContent = `${counted(shown.length, 'site')}${without > 0
            ? `, ${amount(without)} more without coordinates` : ''}. The colour is the class of the last event in ` +
            'the site’s domain.';
        at('map-details').replaceChildren();
        this.#paint();
    }

    #paint() {
        if (this.#shown.length === 0) {
            this.#chart.clear();
            at('map-scale').hidden = true;
            return;
        }
        this.#view ??= this.#viewOf(this.#shown);
        const { x, y, scale } = this.#view;
        const { width, height } = this.#frame;
        const extent = { left: x - width / 2 * scale, right: x + width / 2 * scale,
            low: y - height / 2 * scale, high: y + height / 2 * scale };
        const clusters = this.#clusters();
        this.#chart.setOption(this.#option(extent, clusters), { notMerge: true });
        // For those who test it, and for style sheets.
        at('map-chart').dataset.points = String(clusters.length);
        this.#paintScale();
    }

    #paintScale() {
        const perPixel = metresAt(this.#view.y) * this.#view.scale;
        const length = roundBelow(perPixel * 120);
        const scale = at('map-scale');
        scale.hidden = false;
        scale.style.width = `${length / perPixel}px`;
        scale.firstElementChild.textContent = length >= 1000 ? `${length / 1000} km` : `${length} m`;
    }

    #option({ left, right, low, high }, clusters) {
        const line = palette.colour('--line');
        const label = { color: palette.colour('--ink-soft'), fontSize: 11, fontFamily: 'inherit' };
        const ground = palette.colour('--raised');
        const axis = (lines, rest) => ({
            type: 'value', axisLine: { show: false }, splitLine: { lineStyle: { color: line, type: [2, 4] } },
            axisTick: { show: false, customValues: lines }, axisLabel: { ...label, customValues: lines, ...rest },
        });
        const easts = graticule(left, right);
        const norths = graticule(latitudeOf(low), latitudeOf(high), 5);
        return {
            animation: false,
            textStyle: { fontFamily: getComputedStyle(document.body).fontFamily },
            grid: margin,
            xAxis: { min: left, max: right, ...axis(easts, { formatter: value => degrees(value, 'E', 'W') }) },
            yAxis: { min: low, max: high,
                ...axis(norths.map(upOf), { formatter: value => degrees(latitudeOf(value), 'N', 'S') }) },
            tooltip: {
                renderMode: 'richText', backgroundColor: ground, borderColor: line, padding: [8, 12],
                textStyle: { ...label, fontSize: 12, color: palette.colour('--ink') },
                formatter: ({ data: { members } }) => (members.length > 1 ? `${counted(members.length, 'site')}`
                    : `${orDash(members[0].Name)}`.replace(/[{}]/g, '')),
            },
            series: [{
                type: 'scatter',
                data: clusters.map(({ x, y, members }) => {
                    const last = this.#stateOf(members);
                    const colour = last ? palette.colourOfClass(last.Class) : palette.colour('--class-0');
                    return { value: [x, y], members,
                        symbolSize: members.length === 1 ? 11 : Math.min(50, 18 + 5 * Math.log2(members.length)),
                        itemStyle: members.length === 1 ? { color: colour, borderColor: ground, borderWidth: 1.5, opacity: 1 }
                            : { color: ground, borderColor: colour, borderWidth: 4, opacity: 1 },
                        label: { show: members.length > 1, formatter: String(members.length),
                            color: palette.colour('--ink'), fontSize: 12, fontWeight: 600 } };
                }),
            }],
        };
    }
}
