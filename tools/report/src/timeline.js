// The events over time: bars of each class within the period, and the whole time below, of which the period is a part.
import { BarChart, LineChart } from 'echarts/charts';
import { AriaComponent, BrushComponent, DataZoomComponent, GridComponent, TooltipComponent } from 'echarts/components';
import * as echarts from 'echarts/core';
import { CanvasRenderer } from 'echarts/renderers';
import { at } from './elements.js';
import * as palette from './palette.js';
import { CLASS, PERIOD, REST } from './selection.js';
import * as state from './state.js';
import { amount, counted, hasDates, time } from './texts.js';

echarts.use([BarChart, LineChart, AriaComponent, BrushComponent, DataZoomComponent, GridComponent, TooltipComponent,
    CanvasRenderer]);

/** Lengths of bars that a clock knows, in seconds. */
const lengths = [1, 5, 10, 30, 60, 300, 600, 1800, 3600, 3 * 3600, 6 * 3600, 12 * 3600, 86400, 7 * 86400, 28 * 86400,
    91 * 86400, 364 * 86400];
const mostBars = 124;

/** @returns {number} how much time a bar stands for */
function lengthOfBars(from, to) {
    const least = (to - from + 1) / mostBars;
    return lengths.find(length => length >= least) ?? Math.ceil(least);
}

const words = new Map([[1, 'second'], [60, 'minute'], [3600, 'hour'], [86400, 'day']]);

function nameOfLength(length) {
    if (!hasDates())
        return amount(length);
    const unit = [...words.keys()].reverse().find(seconds => length % seconds === 0 && length >= seconds);
    return length === unit ? words.get(unit) : counted(length / unit, words.get(unit));
}

export class Timeline {
    #chart = echarts.init(at('timeline-chart'), null, { renderer: 'canvas' });
    #events;
    #span;
    #period;
    #shownPeriod = '';
    #sliding;

    /** @param {object[]} events */
    constructor(events) {
        this.#events = events;
        this.#span = [Infinity, -Infinity];
        for (const { Time } of events) {
            if (Time !== null)
                this.#span = [Math.min(this.#span[0], Time), Math.max(this.#span[1], Time)];
        }
        this.#chart.on('brushEnd', ({ areas }) => this.#choose(areas[0]?.coordRange));
        this.#chart.on('datazoom', () => this.#slide());
        new ResizeObserver(() => this.#chart.resize()).observe(at('timeline-chart'));
        for (const button of document.querySelectorAll('[data-period]'))
            button.addEventListener('click', () => this.#move(button.dataset.period));
    }

    get #isEmpty() { return this.#span[0] > this.#span[1]; }

    /** Takes a part of the time as the period; all of it is no filter. */
    #choose(range) {
        this.#chart.dispatchAction({ type: 'brush', areas: [] });
        if (!range)
            return;
        const [first, last] = this.#span;
        const from = Math.max(first, Math.floor(this.#toSeconds(range[0])));
        const to = Math.min(last, Math.ceil(this.#toSeconds(range[1])));
        if (to > from)
            state.set({ from: from > first ? from : '', to: to < last ? to : '' });
    }

    #slide() {
        const { startValue, endValue } = this.#chart.getOption().dataZoom[0];
        clearTimeout(this.#sliding);
        this.#sliding = setTimeout(() => {
            const range = [startValue, endValue].map(value => Math.round(this.#toSeconds(value)));
            if (String(range) !== this.#shownPeriod)
                this.#choose([startValue, endValue]);
        }, 60);
    }

    #move(how) {
        if (this.#isEmpty)
            return;
        const [first, last] = this.#span;
        const [from, to] = this.#period;
        const length = to - from;
        const moved = {
            earlier: [from - length / 2, to - length / 2],
            later: [from + length / 2, to + length / 2],
            in: [from + length / 4, to - length / 4],
            out: [from - length / 2, to + length / 2],
            all: [first, last],
        }[how];
        // At either end it keeps its length.
        const shift = how === 'earlier' ? Math.max(0, first - moved[0]) : how === 'later' ? Math.min(0, last - moved[1]) : 0;
        this.#choose(moved.map(value => this.#fromSeconds(value + shift)));
    }

    #fromSeconds(value) { return hasDates() ? value * 1000 : value; }
    #toSeconds(value) { return hasDates() ? value / 1000 : value; }

    /** @param {{passed: Uint8Array}} selection */
    draw({ passed }) {
        if (this.#isEmpty) {
            at('timeline-note').textContent = 'There are no events with a time.';
            return;
        }
        const [first, last] = this.#span;
        this.#period = [state.number('from') ?? first, Math.max(state.number('to') ?? last, state.number('from') ?? first)];
        const [from, to] = this.#period;
        this.#shownPeriod = String(this.#period);
        const length = lengthOfBars(from, to);
        const start = Math.floor(from / length) * length;
        const bars = Math.max(1, Math.floor((to - start) / length) + 1);
        const perClass = new Map(palette.classes().map(code => [code, new Uint32Array(bars)]));
        const overviewLength = lengthOfBars(first, last);
        const overviewStart = Math.floor(first / overviewLength) * overviewLength;
        const overview = new Uint32Array(Math.floor((last - overviewStart) / overviewLength) + 1);
        let count = 0;
        this.#events.forEach(({ Time, Class }, i) => {
            if (Time === null || (passed[i] & (CLASS | REST)) !== (CLASS | REST))
                return;
            ++overview[Math.floor((Time - overviewStart) / overviewLength)];
            if (passed[i] & PERIOD) {
                ++perClass.get(Class)[Math.floor((Time - start) / length)];
                ++count;
            }
        });
        at('timeline-note').textContent = `${counted(count, 'event')} from ${time(from)} to ${time(to)}; ` +
            `a bar is ${words.has(length) || !hasDates() ? `1 ${nameOfLength(length)}`.replace(/^1 (?=\d)/, '') :
                nameOfLength(length)}. Drag across the bars to choose a period.`;
        const points = (counts, begin, step) =>
            Array.from(counts, (value, i) => [this.#fromSeconds(begin + (i + 0.5) * step), value]);
        const series = [...perClass].filter(([, counts]) => counts.some(value => value > 0))
            .map(([code, counts]) => ({
                id: `class ${code}`,
                name: palette.nameOfClass(code),
                type: 'bar',
                stack: 'events',
                barCategoryGap: '18%',
                itemStyle: { color: palette.colourOfClass(code) },
                emphasis: { disabled: true },
                data: points(counts, start, length),
            }));
        this.#chart.setOption(this.#option(series, points(overview, overviewStart, overviewLength), [start, to, length]),
            { replaceMerge: ['series'] });
        this.#chart.dispatchAction({ type: 'takeGlobalCursor', key: 'brush',
            brushOption: { brushType: 'lineX', brushMode: 'single' } });
    }

    #option(series, overview, [start, to, length]) {
        const ink = palette.colour('--ink-soft');
        const line = palette.colour('--line');
        const accent = palette.colour('--accent');
        const text = { color: ink, fontFamily: 'inherit', fontSize: 11 };
        const axis = {
            type: hasDates() ? 'time' : 'value',
            axisLine: { lineStyle: { color: line } },
            axisTick: { show: false },
            axisLabel: { ...text, hideOverlap: true, formatter: hasDates() ? undefined : String },
            splitLine: { show: false },
        };
        const barTime = value => Math.floor(this.#toSeconds(value) / length) * length;
        return {
            animation: false,
            useUTC: true,
            textStyle: { fontFamily: getComputedStyle(document.body).fontFamily },
            aria: { enabled: false },
            grid: [{ left: 44, right: 12, top: 12, bottom: 84 }, { left: 44, right: 12, bottom: 8, height: 1 }],
            xAxis: [
                { ...axis, gridIndex: 0, min: this.#fromSeconds(start), max: this.#fromSeconds(Math.max(to, start + length)) },
                { ...axis, gridIndex: 1, min: this.#fromSeconds(this.#span[0]), max: this.#fromSeconds(this.#span[1]),
                    show: false },
            ],
            yAxis: [
                { gridIndex: 0, minInterval: 1, splitNumber: 4, axisLabel: { ...text, formatter: amount },
                    splitLine: { lineStyle: { color: line } } },
                { gridIndex: 1, show: false },
            ],
            series: [...series, { id: 'overview', type: 'line', xAxisIndex: 1, yAxisIndex: 1, silent: true, symbol: 'none',
                lineStyle: { opacity: 0 }, tooltip: { show: false }, data: overview }],
            brush: { xAxisIndex: 0, toolbox: [], brushLink: null, throttleType: 'debounce', outOfBrush: { colorAlpha: 1 },
                brushStyle: { color: palette.colour('--accent-wash'), borderColor: accent, borderWidth: 1 } },
            dataZoom: [{
                type: 'slider', xAxisIndex: 1, filterMode: 'none', height: 34, bottom: 12, left: 44, right: 12,
                startValue: this.#fromSeconds(this.#period[0]), endValue: this.#fromSeconds(this.#period[1]),
                borderColor: 'transparent', backgroundColor: palette.colour('--sunk'), borderRadius: 4,
                fillerColor: palette.colour('--accent-wash'), showDetail: false, brushSelect: false,
                moveHandleSize: 0, handleSize: '100%', handleStyle: { color: accent, borderWidth: 0 },
                handleIcon: 'path://M-1.5,-10h3v20h-3z',
                dataBackground: { lineStyle: { opacity: 0 }, areaStyle: { color: ink, opacity: 0.35 } },
                selectedDataBackground: { lineStyle: { opacity: 0 }, areaStyle: { color: accent, opacity: 0.55 } },
            }],
            tooltip: {
                trigger: 'axis', renderMode: 'richText', axisPointer: { type: 'line', lineStyle: { color: ink } },
                backgroundColor: palette.colour('--raised'), borderColor: line, padding: [8, 12],
                textStyle: { ...text, fontSize: 12, color: palette.colour('--ink') },
                formatter: found => {
                    const bars = found.filter(({ value }) => value?.[1] > 0);
                    return bars.length === 0 ? '' : [time(barTime(bars[0].value[0])), ...bars.map(
                        ({ marker, seriesName, value }) => `${marker} ${seriesName}  ${amount(value[1])}`)].join('\n');
                },
            },
        };
    }
}
