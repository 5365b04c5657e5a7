/*
 * Opens traces in speedscope, as its own command does, and fails when its importer complains, when
 * a thread is missing, or when nothing is shown. It runs in a document without a screen: what draws
 * gets answers that mean nothing.
 *
 *     node speedscope.mjs FOLDER-OF-SPEEDSCOPE TRACE...
 */
import {readdirSync, readFileSync} from 'node:fs';
import {join} from 'node:path';
import {JSDOM, VirtualConsole} from 'jsdom';

const complaints = /Tried to end|still open|Something went wrong|Failed|Error/;

// A drawing context of which every constant is a number and every call does nothing.
function drawingContext(canvas) {
    const constants = new Map();
    const constant = name => constants.set(name, constants.get(name) ?? constants.size + 1).get(name);
    const answers = {
        canvas,
        measureText: text => ({width: text.length}),
        getParameter: () => 4096,
        getShaderParameter: () => true,
        getProgramParameter: (program, name) => (name === constant('LINK_STATUS') ? true : 0),
        getSupportedExtensions: () => [],
        getContextAttributes: () => ({}),
        getExtension: () => null,
        isContextLost: () => false,
        getError: () => 0,
    };
    return new Proxy(answers, {
        get: (known, name) => {
            if (typeof name === 'symbol' || name in known) {
                return known[name];
            }
            return /^[A-Z0-9_]+$/.test(name) ? constant(name) : () => ({});
        },
    });
}

function openSpeedscope(folder, said) {
    const log = new VirtualConsole();
    for (const level of ['log', 'warn', 'error', 'jsdomError']) {
        log.on(level, (...words) => said.push(words.map(String).join(' ')));
    }
    const dom = new JSDOM('<!doctype html><title></title><body></body>', {
        url: 'http://localhost/#localProfilePath=trace&view=sandwich',
        runScripts: 'outside-only',
        pretendToBeVisual: true,
        virtualConsole: log,
    });
    const window = dom.window;
    const size = {x: 0, y: 0, left: 0, top: 0, width: 1000, height: 1000, right: 1000, bottom: 1000};
    Object.assign(window, {TextDecoder, TextEncoder});
    window.matchMedia = () => ({matches: false, addListener() {}, addEventListener() {}});
    window.Element.prototype.scrollIntoView = () => {};
    window.Element.prototype.scrollTo = () => {};
    window.Element.prototype.getBoundingClientRect = () => size;
    window.HTMLCanvasElement.prototype.getContext = function () {
        return drawingContext(this);
    };
    const bundle = readdirSync(folder).find(name => /^speedscope-.*\.js$/.test(name));
    window.eval(readFileSync(join(folder, bundle), 'utf8'));
    return window;
}

// Waits for the text that shows that the trace was imported.
async function shownText(window) {
    for (let tries = 0; tries < 600; ++tries) {
        const text = window.document.body.textContent;
        if (text.includes('Total Weight') || text.includes('Something went wrong')) {
            return text;
        }
        await new Promise(resolve => setTimeout(resolve, 50));
    }
    return window.document.body.textContent;
}

async function check(folder, path) {
    const trace = readFileSync(path);
    const {traceEvents} = JSON.parse(trace);
    const threads = traceEvents.filter(event => event.name === 'thread_name');
    const tracks = new Set(traceEvents.filter(event => event.ph === 'B').map(event => event.tid));
    const said = [];
    const window = openSpeedscope(folder, said);
    window.speedscope.loadFileFromBase64(path, trace.toString('base64'));
    const text = await shownText(window);
    const faults = said.filter(line => complaints.test(line)).map(line => line.slice(0, 300));
    if (!text.includes('Total Weight') || !text.includes(`(1/${tracks.size})`)) {
        faults.push(`expected ${tracks.size} threads, shown is ${text.slice(0, 300)}`);
    }
    for (const thread of threads.filter(each => tracks.has(each.tid))) {
        if (!text.includes(`${thread.args.name} (tid ${thread.tid})`)) {
            faults.push(`thread ${thread.args.name} is missing`);
        }
    }
    window.close();
    return faults;
}

const [folder, ...paths] = process.argv.slice(2);
let hasFaults = false;
for (const path of paths) {
    const faults = await check(folder, path);
    hasFaults ||= faults.length > 0;
    console.log(`${path}: ${faults.length === 0 ? 'speedscope opens it' : 'speedscope objects'}`);
    faults.slice(0, 20).forEach(fault => console.log(`  ${fault}`));
}
process.exit(hasFaults ? 1 : 0);
