import { decodeText } from "./text.js";

// The page holds its data as blocks of compressed JSON. What the first screen needs comes before
// the program, all else after it, unpacked when it is asked for.

const whenLoaded = new Promise((resolve) => {
  document.addEventListener("DOMContentLoaded", resolve, { once: true });
});

function bytesOf(id) {
  const text = atob(document.getElementById(id).textContent);
  return Uint8Array.from(text, (c) => c.charCodeAt(0));
}

async function unpack(id) {
  const stream = new Blob([bytesOf(id)]).stream().pipeThrough(new DecompressionStream("deflate"));
  return new Response(stream).json();
}

function decodeGroup(group) {
  return { ...group, removed: decodeText(group.removed), added: decodeText(group.added) };
}

/** A row of the table for each pair, from the index's columns. */
function rowsOf(index, groups) {
  const rows = index.names.map((name, number) => ({
    number,
    id: index.ids[number],
    name: decodeText(name),
    folder: index.folderNames[index.folders[number]],
    format: index.formatNames[index.formats[number]],
    verdict: index.verdictNames[index.verdicts[number]],
    seconds: index.microseconds[number] / 1e6,
    places: index.places[number],
    groups: [],
  }));
  for (const group of groups) {
    for (const number of group.pairs) {
      rows[number].groups.push(group);
    }
  }
  return rows;
}

/**
 * Puts groups together that the same pairs show, in the order of the groups: a page with a hundred
 * changes of its own is one thing to look at. Each is {groups, pairs}.
 */
function bundlesOf(groups) {
  const bundles = new Map();
  for (const group of groups) {
    const key = group.pairs.join();
    if (!bundles.has(key)) {
      bundles.set(key, { groups: [], pairs: group.pairs });
    }
    bundles.get(key).groups.push(group);
  }
  return [...bundles.values()];
}

/** Reads what the overview needs: the run, its bundles of groups, and a row for each pair. */
export async function loadOverview() {
  const [head, index] = await Promise.all([unpack("head"), unpack("index")]);
  index.folderNames = index.folderNames.map(decodeText);
  const groups = head.groups.map(decodeGroup);
  const rows = rowsOf(index, groups);
  const byId = new Map(rows.map((row) => [row.id, row]));
  return {
    run: head.run,
    account: head.account.map(decodeText),
    records: head.records.map(decodeText),
    bundles: bundlesOf(groups),
    rows,
    byId,
    blocks: index.blocks,
  };
}

const loadedBlocks = new Map();

function load(id) {
  if (!loadedBlocks.has(id)) {
    loadedBlocks.set(
      id,
      whenLoaded.then(() => unpack(id)),
    );
  }
  return loadedBlocks.get(id);
}

/** The block of a pair; `blocks` are the numbers of the first pairs of each block. */
function blockOf(blocks, number) {
  return blocks.findLastIndex((first) => first <= number);
}

/** The whole record of a pair. */
export async function loadPair(blocks, number) {
  const block = blockOf(blocks, number);
  return (await load(`details${block}`))[number - blocks[block]];
}

/** What its folds hold: [{at, first, left, last}], before each hunk and behind the last; or none. */
export async function loadFolds(blocks, number) {
  await whenLoaded;
  const id = `context${blockOf(blocks, number)}`;
  return document.getElementById(id) === null ? [] : ((await load(id))[number] ?? []);
}

/** The pictures of a pair: {views: [{label, master, output}], notes}, or undefined. */
export async function loadPictures(number) {
  return (await load("pictures"))[number];
}

/** A picture's file. */
export function pictureFile(id) {
  return new Blob([bytesOf(id)], { type: "image/png" });
}
