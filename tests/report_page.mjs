// The page of a report in a browser, beside what report_test.py has counted. report_page.mjs MODULES BROWSER <expected
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';

const [modules, browserPath] = process.argv.slice(2);
const { chromium } = createRequire(`${modules}/`)('playwright-core');
const expected = JSON.parse(readFileSync(0, 'utf8'));
const amount = number => number.toLocaleString('en');

const browser = await chromium.launch({ executablePath: browserPath, args: ['--no-sandbox'] });
const complaints = [];

/** Opens a page that notes whatever it must not do. */
async function open(name, hash = '', options = {}, isMeasured = false) {
    const context = await browser.newContext({ viewport: { width: 1440, height: 900 }, offline: true, ...options });
    const page = await context.newPage();
    page.setDefaultTimeout(15000);
    page.on('console', message => complaints.push(`${message.type()}: ${message.text()}`));
    page.on('pageerror', error => complaints.push(String(error.stack)));
    page.on('request', request => /^(file|blob):/.test(request.url()) || complaints.push(request.url()));
    await page.addInitScript(() => {
        window.markup = [];
        const { set, get } = Object.getOwnPropertyDescriptor(Element.prototype, 'innerHTML');
        Object.defineProperty(Element.prototype, 'innerHTML',
            { get, set(text) { window.markup.push(String(text)); set.call(this, text); } });
    });
    if (isMeasured) {
        page.session = await context.newCDPSession(page);
        // The page's own time on the processor: the machine may have other work.
        await page.session.send('Performance.enable', { timeDomain: 'threadTicks' });
    }
    await page.goto(expected.pages[name].page + hash);
    await page.waitForSelector('html[data-ready]');
    await page.locator('#events-grid').scrollIntoViewIfNeeded(); // It is made when it is about to be seen.
    await page.waitForSelector('#events-grid .tabulator-row');
    return page;
}

const live = page => page.textContent('#live');
const shows = (page, number, what) => page.waitForFunction(text => document.getElementById('live').textContent.startsWith(text),
    `${amount(number)} of`, { timeout: 5000 }).catch(async () => assert.fail(`${what}: ${await live(page)}, not ${number}`));

/** Until a part of the page says something, and that is returned. */
const says = async (page, selector, pattern) => {
    await page.waitForFunction(([where, source]) => new RegExp(source).test(document.querySelector(where)?.textContent),
        [selector, pattern.source], { timeout: 5000 }).catch(async () =>
        assert.fail(`${selector} says ${await page.textContent(selector)}, not ${pattern}`));
    return page.textContent(selector);
};

const tests = {
    async 'is ready within two seconds, with the counts of the file'() {
        const page = await open('whole', '', {}, true);
        await page.click('[data-class="3"]');
        await shows(page, expected.classes[3], 'class 3');
        const { metrics } = await page.session.send('Performance.getMetrics');
        const { value: seconds } = metrics.find(({ name }) => name === 'TaskDuration');
        assert.ok(seconds > 0.05 && seconds < 2, `it took ${seconds} s`);
        console.log(`ready and filtered after ${seconds.toFixed(2)} s`);
        await page.click('#reset');
        await shows(page, expected.tables.Events, 'all events');
        for (const tile of await page.$$('[data-count]')) {
            const table = await tile.getAttribute('data-count');
            assert.equal(await tile.textContent(), amount(expected.tables[table]), table);
        }
        for (const [code, number] of Object.entries(expected.classes))
            assert.equal(await page.textContent(`[data-class="${code}"] span`), amount(number), `class ${code}`);
        assert.ok(await page.locator('#events-grid .tabulator-row').count() < 100, 'all rows are made');
        await says(page, '#findings', new RegExp(`${amount(expected.hidden)} Events: their device is not stored`));
        await page.click('#findings li > button');
        await shows(page, 5, 'the examples of a finding');
    },

    async 'filters combine, live in the address and survive a reload'() {
        const page = await open('whole');
        const [from, to] = expected.period;
        const date = seconds => new Date(seconds * 1000).toISOString().slice(0, 19);
        await page.fill('#from', date(from));
        await page.fill('#to', date(to));
        await page.press('#to', 'Enter');
        await page.locator('#q').focus();
        await shows(page, expected.inPeriod, 'the period');
        await page.selectOption('#domain', '2');
        await page.click('[data-class="3"]');
        await page.click('[data-class="4"]');
        await shows(page, expected.both, 'period, domain and classes');
        assert.match(await says(page, '#timeline-note', /^\d/), new RegExp(`^${amount(expected.both)} event`));
        await says(page, '#operators-note', new RegExp(`^${expected.operators} of`));
        await says(page, '#map-note', new RegExp(`^${expected.sitesOfDomain} site`));
        const address = page.url();
        await page.reload();
        await page.waitForSelector('html[data-ready]');
        assert.equal(page.url(), address);
        await shows(page, expected.both, 'after a reload');
        await page.click('[data-period="all"]');
        await page.click('#reset');
        for (const filter of ['hidden', 'affect']) {
            await page.selectOption('#show', filter);
            await shows(page, expected[filter], filter);
        }
        await page.click('#reset');
        await page.locator('#events-grid').scrollIntoViewIfNeeded(); // It is made when it comes near.
        await page.fill('[data-filter="e.ZoneId"]', '2..3');
        await page.fill('[data-filter="e.Data"]', 'CALC');
        await shows(page, expected.reason, 'filters of columns');
        const [download] = await Promise.all([page.waitForEvent('download'), page.click('#csv')]);
        const lines = readFileSync(await download.path(), 'utf8').trim().split('\n');
        assert.equal(lines.length, expected.reason + 1);
        assert.ok(lines[1].includes('"\'=1+1'), 'a spreadsheet would run what the file holds');
    },

    async 'a part of the time can be chosen on the chart, and left again'() {
        const page = await open('whole');
        await page.evaluate(() => document.getElementById('timeline').scrollIntoView({ behavior: 'instant' }));
        const box = await page.locator('#timeline-chart').boundingBox();
        const drag = async (from, to, height) => {
            await page.mouse.move(box.x + box.width * from, box.y + height);
            await page.mouse.down();
            await page.mouse.move(box.x + box.width * to, box.y + height, { steps: 5 });
            await page.mouse.up();
        };
        await drag(0.4, 0.6, 120);
        await page.waitForFunction(() => location.hash.includes('from') && location.hash.includes('to'));
        const narrow = new URLSearchParams(new URL(page.url()).hash.slice(1));
        await page.click('[data-period="out"]');
        await page.waitForFunction(from => Number(new URLSearchParams(location.hash.slice(1)).get('from')) < from,
            Number(narrow.get('from')));
        await page.click('[data-period="all"]');
        await shows(page, expected.tables.Events, 'the whole period');
        assert.equal(new URL(page.url()).hash, '');
    },

    async 'clusters of the map open to sites'() {
        const page = await open('whole', '#domain=2');
        await page.click('#map [data-map="all"]');
        const points = () => page.$eval('#map-chart', chart => Number(chart.dataset.points));
        const together = await points();
        await page.click('#map [data-map="out"]');
        await page.locator('#map-chart').press('-');
        assert.ok(await points() < together, 'near sites are no cluster');
        assert.match(await says(page, '#map-scale', /\d/), /^\d+ k?m$/);
        await page.evaluate(() => document.getElementById('map').scrollIntoView({ behavior: 'instant' }));
        const box = await page.locator('#map-chart').boundingBox();
        const before = await points();
        for (let i = 0; i < 40 && await page.textContent('#map-details') === ''; ++i)
            await page.mouse.click(box.x + box.width / 2 + (i % 8 - 4) * 12, box.y + box.height / 2 + (Math.floor(i / 8) - 2) * 14);
        assert.match(await says(page, '#map-details', /Site/), /Site \d+, domain/);
        assert.ok(await points() >= before);
    },

    async 'hostile texts stay texts'() {
        const page = await open('whole');
        await page.evaluate(() => { document.querySelector('#tree details').open = true; });
        for (let depth = 0; depth < 4; ++depth) {
            await page.evaluate(() => document.querySelectorAll('#tree details').forEach(branch => { branch.open = true; }));
            await page.waitForTimeout(50);
        }
        for (const part of ['events-grid', 'tree', 'operators-grid', 'contracts-grid']) {
            await page.locator(`#${part}`).scrollIntoViewIfNeeded();
            if (part.endsWith('grid'))
                await page.waitForSelector(`#${part} .tabulator-row`);
            const text = await page.evaluate(id => document.getElementById(id).textContent, part);
            for (const hostile of expected.hostile)
                assert.ok(text.includes(hostile), `${part} does not show ${JSON.stringify(hostile)}`);
        }
        const { broken, markup } = await page.evaluate(() => ({ broken: window.broken, markup: window.markup }));
        assert.equal(broken, undefined);
        const spoken = markup.filter(text => !['', '&nbsp;', "<div class='tabulator-arrow'></div>"].includes(text));
        assert.deepEqual(spoken, [], 'something of the file was read as markup');
        assert.equal(await page.locator('#events-grid img, #tree img').count(), 0);
        // Last, as it is told to the console.
        const said = complaints.length;
        await page.evaluate(() => {
            const script = document.createElement('script');
            try { script.text = 'window.broken = 1'; } catch { script.append('window.broken = 1'); }
            document.body.append(script);
        });
        assert.equal(await page.evaluate(() => window.broken), undefined, 'the policy lets a foreign script run');
        complaints.splice(said);
    },

    async 'keyboard, names of controls, themes and paper'() {
        const page = await open('last', '', { colorScheme: 'dark' });
        const theme = () => page.evaluate(() => getComputedStyle(document.body).backgroundColor);
        const dark = await theme();
        await page.selectOption('#theme', 'light');
        assert.notEqual(await theme(), dark);
        assert.match(await page.textContent('#caps'), /newest 300 of/);
        await shows(page, 300, 'the last events');
        await page.evaluate(() => document.activeElement.blur());
        await page.keyboard.press('Tab');
        await page.keyboard.press('Enter');
        assert.equal(await page.evaluate(() => document.activeElement.id), 'events');
        await page.locator('#events-grid .head button').nth(3).press('Enter');
        assert.equal(await page.locator('#events-grid [aria-sort="ascending"]').count(), 1);
        const nameless = await page.evaluate(() => [...document.querySelectorAll('button, input, select, [role="img"]')]
            .filter(control => !(control.getAttribute('aria-label') || control.getAttribute('aria-labelledby') ||
                control.closest('label')?.textContent.trim() || control.textContent.trim())).map(control => control.outerHTML));
        assert.deepEqual(nameless, []);
        await page.emulateMedia({ media: 'print' });
        await page.evaluate(() => window.dispatchEvent(new Event('beforeprint')));
        assert.equal(await page.locator('#print-events tbody tr').count(), 200);
        assert.equal(await page.locator('#events-grid').isVisible(), false);
    },
};

let failed = 0;
for (const [name, test] of Object.entries(tests)) {
    const start = Date.now();
    try {
        await test();
        assert.deepEqual(complaints.splice(0), [], 'the page complains, or asks for something');
        console.log(`ok: ${name} (${Date.now() - start} ms)`);
    } catch (error) {
        ++failed;
        console.log(`FAILED: ${name}\n${error.stack}`);
    }
    for (const context of browser.contexts())
        await context.close();
}
await browser.close();
process.exit(failed > 0 ? 1 : 0);
