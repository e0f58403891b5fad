// Makes the template of the report: one page with its script and its style inside, and a place for the data.
// node build.js OUTPUT
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const here = name => fileURLToPath(new URL(name, import.meta.url));
const [output = 'template.html'] = process.argv.slice(2);

const { outputFiles } = await build({
    entryPoints: [here('src/main.js')],
    bundle: true,
    minify: true,
    format: 'iife',
    target: 'es2022',
    charset: 'ascii', // Whatever becomes of the file on its way, the hashes fit.
    legalComments: 'none',
    outdir: here('.'),
    write: false,
});
const textOf = ending => outputFiles.find(({ path }) => path.endsWith(ending)).text;

/** What stands in a script or style element must not look like its end. */
const inside = (element, text) => {
    if (new RegExp(`</${element}`, 'i').test(text) || text.includes('<!--'))
        throw new Error(`the ${element} would end before its end`);
    return text;
};
const script = inside('script', textOf('.js'));
const style = inside('style', textOf('.css'));
const hash = text => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;
const policy = [
    "default-src 'none'",
    `script-src ${hash(script)}`,
    `style-src ${hash(style)}`,
    "base-uri 'none'",
    "form-action 'none'",
    "require-trusted-types-for 'script'",
    'trusted-types default',
].join('; ');

const parts = { policy, style, script, data: '{{data}}' };
const template = readFileSync(here('src/page.html'), 'utf8').replace(/\{\{(\w+)\}\}/g, (_, name) => parts[name]);
writeFileSync(output, template);
