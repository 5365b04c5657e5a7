/*
 * Imports traces into the model of the viewer behind chrome://tracing, and fails when it warns
 * of a fault or holds other slices, instants, spans, counters or names than the trace.
 *
 *     node trace-viewer.mjs FOLDER-OF-TRACEVIEWER TRACE...
 */
import {readFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import {join, resolve} from 'node:path';
import {isDeepStrictEqual} from 'node:util';

// The package's own entry point looks for its sources with Python 2.
function loadViewer(folder) {
    createRequire(import.meta.url)(join(folder, 'catapult_build/node_bootstrap.js'));
    const sources = ['tracing', 'tracing/third_party/gl-matrix/dist', 'tracing/third_party/jszip'];
    globalThis.HTMLImportsLoader.addArrayToSourcePath(sources.map(each => join(folder, each)));
    for (const page of ['importer/import', 'model/model', 'extras/full_config']) {
        globalThis.HTMLImportsLoader.loadHTML(`/tracing/${page}.html`);
    }
    return globalThis.tr;
}

function contentOfTrace({traceEvents, otherData}) {
    const threads = {};
    const counters = {};
    for (const event of traceEvents.filter(each => each.name === 'thread_name')) {
        threads[event.tid] = {name: event.args.name, slices: 0, spans: 0};
    }
    for (const event of traceEvents) {
        if (event.ph === 'B' || (event.ph === 'i' && event.s === 't')) {
            ++threads[event.tid].slices;
        } else if (event.ph === 'b') {
            ++threads[event.tid].spans;
        } else if (event.ph === 'C') {
            counters[event.name] = (counters[event.name] ?? 0) + 1;
        }
    }
    const instants = traceEvents.filter(each => each.ph === 'i' && each.s === 'g').length;
    return {threads, counters, instants, unfinished: 0, metadata: otherData};
}

function contentOfModel(model) {
    const [process] = model.getAllProcesses();
    const threads = {};
    const counters = {};
    let unfinished = 0;
    for (const thread of Object.values(process.threads)) {
        const slices = thread.sliceGroup.slices;
        const spans = thread.asyncSliceGroup.slices;
        threads[thread.tid] = {name: thread.name, slices: slices.length, spans: spans.length};
        unfinished += [...slices, ...spans].filter(each => each.didNotFinish).length;
    }
    for (const counter of Object.values(process.counters)) {
        counters[counter.name] = counter.series[0].samples.length;
    }
    const metadata = model.metadata.find(each => each.name === 'otherData')?.value;
    return {threads, counters, instants: model.instantEvents.length, unfinished, metadata};
}

// Both ends of a slice bear its arguments, because speedscope pairs them by these.
function isFault(warning) {
    return warning.type !== 'arg_merge_error';
}

function check(viewer, path) {
    const text = readFileSync(path, 'utf8');
    const model = new viewer.Model();
    const options = new viewer.importer.ImportOptions();
    options.showImportWarnings = false;
    new viewer.importer.Import(model, options).importTraces([text]);
    const faults = model.importWarnings.filter(isFault).map(each => each.message);
    const expected = contentOfTrace(JSON.parse(text));
    const shown = contentOfModel(model);
    for (const part of Object.keys(expected)) {
        if (!isDeepStrictEqual(shown[part], expected[part])) {
            faults.push(`${part}: expected ${JSON.stringify(expected[part])}, shown is ${JSON.stringify(shown[part])}`);
        }
    }
    return faults;
}

const [folder, ...paths] = process.argv.slice(2);
const viewer = loadViewer(resolve(folder));
for (const path of paths) {
    const faults = check(viewer, path);
    console.log(`${path}: the viewer of chrome://tracing ${faults.length === 0 ? 'opens it' : 'objects'}`);
    faults.slice(0, 20).forEach(fault => console.log(`  ${fault}`));
    process.exitCode ||= faults.length === 0 ? 0 : 1;
}
