import { button, el } from "./dom.js";
import { countOf, decodeText, grouped } from "./text.js";

// Hunks as tables: unified, or master and output side by side.

const INVISIBLE = /[\t\u00a0]|^ +$| +$/g;
const STAND_INS = { "\t": "→\t", "\u00a0": "\\u{00A0}" };

/** Changed text, in which blanks show where they may be all that changed. */
function changedText(text) {
  const parts = [];
  let from = 0;
  for (const match of text.matchAll(INVISIBLE)) {
    const standIn = STAND_INS[match[0]] ?? "·".repeat(match[0].length);
    parts.push(text.slice(from, match.index), el("span.escape", {}, standIn));
    from = match.index + match[0].length;
  }
  parts.push(text.slice(from));
  return parts;
}

const reasons = new Map(); // of the suite's own rules, by name

/** Has masks tell why the suite's file has `patterns`: [{name, why, place}]. */
export function tellReasons(patterns) {
  for (const { name, why, place } of patterns) {
    reasons.set(decodeText(name), `${decodeText(why)} (${decodeText(place)})`);
  }
}

function spanNode(span, lineKind) {
  const text = decodeText(span.text);
  if (span.kind === "changed") {
    return el(lineKind === "removed" ? "del" : "ins", {}, changedText(text));
  }
  if (span.kind === "masked") {
    const rule = span.rule || "a rule";
    return el(
      "span.masked",
      { title: reasons.has(rule) ? `not compared: ${rule}: ${reasons.get(rule)}` : `not compared: ${rule}` },
      el("span.text", {}, text),
      el("span.rule", {}, `⟨${rule}⟩`),
    );
  }
  return text;
}

function lineText(line) {
  return [
    line.cutBefore ? el("span.cut", { title: "The line has more before this" }, "…") : null,
    ...line.spans.map((span) => spanNode(span, line.kind)),
    line.cutAfter ? el("span.cut", { title: "The line goes on" }, "…") : null,
  ];
}

const SIGNS = { context: "", removed: "−", added: "+" };

function numberCell(number) {
  return el("td.number", {}, number ? String(number) : "");
}

function textCell(line, columns = 1) {
  return el(
    `td.line.${line.kind}`,
    columns > 1 ? { colspan: columns } : {},
    el("span.sign", {}, SIGNS[line.kind]),
    el("span.code", {}, lineText(line)),
  );
}

function omittedRow(line, columns) {
  return line.omitted
    ? [
        el(
          "tr.fold",
          {},
          el("td", { colspan: columns }, `… ${countOf(line.omitted, `more ${line.kind} line`)}`),
        ),
      ]
    : [];
}

function unifiedRows(lines) {
  return lines.flatMap((line) => [
    el("tr", {}, numberCell(line.masterLine), numberCell(line.outputLine), textCell(line)),
    ...omittedRow(line, 3),
  ]);
}

const NO_CELLS = () => [numberCell(0), el("td.line.absent", {})];

/** Removed lines stand beside the added ones that follow them. */
function splitRows(lines) {
  const rows = [];
  for (let i = 0; i < lines.length;) {
    if (lines[i].kind === "context") {
      const line = lines[i++];
      rows.push(
        el(
          "tr",
          {},
          numberCell(line.masterLine),
          textCell(line),
          numberCell(line.outputLine),
          textCell(line),
        ),
      );
      continue;
    }
    const changed = [];
    while (i < lines.length && lines[i].kind !== "context") {
      changed.push(lines[i++]);
    }
    const removed = changed.filter((line) => line.kind === "removed");
    const added = changed.filter((line) => line.kind === "added");
    for (let k = 0; k < Math.max(removed.length, added.length); ++k) {
      const left = removed[k] ? [numberCell(removed[k].masterLine), textCell(removed[k])] : NO_CELLS();
      const right = added[k] ? [numberCell(added[k].outputLine), textCell(added[k])] : NO_CELLS();
      rows.push(el("tr", {}, left, right));
    }
    rows.push(...changed.flatMap((line) => omittedRow(line, 4)));
  }
  return rows;
}

function firstLine(hunk) {
  return hunk.lines.find((line) => line.masterLine)?.masterLine;
}

function lastLine(hunk) {
  const last = hunk.lines.findLast((line) => line.masterLine);
  return last === undefined ? undefined : last.masterLine + (last.omitted ?? 0);
}

/** What stands between two hunks, or before the first. */
function foldText(before, hunk, known) {
  if (known === "none") {
    return null;
  }
  const from = before ? lastLine(before) : 0;
  const count = from === undefined ? 0 : firstLine(hunk) - from - 1;
  const isSame = known === "all" || (known === "first" && !before);
  const kind = isSame ? "without a difference" : "not shown";
  return count > 0 ? `${countOf(count, "line")} ${kind}` : null;
}

function openedRows({ at, first, left, last }, columns) {
  const rowOf = (text, index) =>
    el(
      "tr",
      {},
      numberCell(index),
      el("td.line.context", { colspan: columns - 1 }, el("span.code", {}, decodeText(text))),
    );
  const rest = left > 0 ? el("tr.fold", {}, el("td", { colspan: columns }, `${countOf(left, "more line")}`)) : null;
  const behind = at + first.length + left;
  return [
    el("tr.fold", {}, el("td", { colspan: columns }, "As in the master:")),
    ...first.map((text, index) => rowOf(text, at + index)),
    rest,
    ...last.map((text, index) => rowOf(text, behind + index)),
  ].filter(Boolean);
}

/** The row of a fold; it opens if its lines are in the report. */
function foldRow(text, fold, columns) {
  const isOpenable = fold !== undefined && fold.first.length > 0;
  const row = el("tr.fold", {}, el("td", { colspan: columns }, isOpenable ? null : text));
  if (isOpenable) {
    const open = () => {
      const rows = openedRows(fold, columns);
      row.replaceWith(...rows);
      rows[0].tabIndex = -1;
      rows[0].focus();
    };
    row.firstChild.append(button(`▸ ${text}`, open, { class: "link" }));
  }
  return row;
}

function textTable(hunks, isSplit, { known = "none", folds = [] } = {}) {
  const columns = isSplit ? 4 : 3;
  const table = el(`table.hunks.${isSplit ? "split" : "unified"}`, {});
  const heads = isSplit ? ["", "Master", "", "Output"] : ["Master", "Output", ""];
  table.append(
    el(
      "thead",
      {},
      el(
        "tr",
        {},
        heads.map((text) => (text ? el("th", { scope: "col" }, text) : el("td", {}))),
      ),
    ),
  );
  hunks.forEach((hunk, index) => {
    const fold = hunk.place ? null : foldText(hunks[index - 1], hunk, known);
    const place = hunk.place ? el("tr.place", {}, el("td", { colspan: columns }, decodeText(hunk.place))) : null;
    table.append(
      el(
        "tbody",
        {},
        place,
        fold ? foldRow(fold, folds[index], columns) : null,
        isSplit ? splitRows(hunk.lines) : unifiedRows(hunk.lines),
      ),
    );
  });
  const end = folds[hunks.length];
  const left = end ? end.first.length + end.left + end.last.length : 0;
  if (left > 0) {
    table.append(
      el("tbody", {}, foldRow(`${countOf(left, "line")} without a difference`, end, columns)),
    );
  }
  return el("div.scroll", { tabindex: 0, role: "group", "aria-label": "Differences, line by line" }, table);
}

/** Whether a hunk is one value at a place that it names, in master, output or both. */
function isValue(hunk) {
  const count = (kind) => hunk.lines.filter((line) => line.kind === kind).length;
  return hunk.place !== "" && count("context") === 0 && count("removed") <= 1 && count("added") <= 1;
}

function valueCell(hunk, kind) {
  const line = hunk.lines.find((each) => each.kind === kind);
  return line
    ? el(`td.value.${kind}`, {}, el("span.sign", {}, SIGNS[kind]), el("span.code", {}, lineText(line)))
    : el("td.value.absent", {}, "absent");
}

/** Values by place: members of a document, rows and columns that only one file has. */
function valueTable(hunks) {
  const rows = hunks.map((hunk) =>
    el(
      "tr",
      {},
      el("th", { scope: "row" }, decodeText(hunk.place)),
      valueCell(hunk, "removed"),
      valueCell(hunk, "added"),
    ),
  );
  return valuesIn("places", "Differences, by place", ["Where", "Master", "Output"], rows);
}

function valuesIn(kind, label, heads, rows) {
  const head = el(
    "tr",
    {},
    heads.map((text) => el("th", { scope: "col" }, text)),
  );
  return el(
    "div.scroll",
    { tabindex: 0, role: "group", "aria-label": label },
    el(`table.values.${kind}`, {}, el("thead", {}, head), el("tbody", {}, rows)),
  );
}

/** The row and column of a hunk that is a changed cell; null for others. */
function cellOf(hunk) {
  const found = isValue(hunk) ? decodeText(hunk.place).match(/^(row \d[^,]*), (.*)$/s) : null;
  const isWholeRow = found !== null && /^only in the (master|output)$/.test(found[2]);
  return found === null || isWholeRow ? null : { row: found[1], column: found[2] };
}

/** A changed cell: "old → new". */
function changedCell(hunks = []) {
  const side = (hunk, kind, tag) => {
    const line = hunk.lines.find((each) => each.kind === kind);
    return line ? el(tag, { "aria-label": kind }, lineText(line)) : el("em", {}, "absent");
  };
  return el(
    "td.cell",
    {},
    hunks.map((hunk) => el("div.code", {}, side(hunk, "removed", "del"), " → ", side(hunk, "added", "ins"))),
  );
}

/** A table of the cells that changed, without the rows and columns in which none did. */
function cellTable(hunks) {
  const rows = new Map();
  const columns = new Set();
  for (const hunk of hunks) {
    const { row, column } = cellOf(hunk);
    columns.add(column);
    if (!rows.has(row)) {
      rows.set(row, new Map());
    }
    const cells = rows.get(row);
    cells.set(column, [...(cells.get(column) ?? []), hunk]);
  }
  const bodies = [...rows].map(([row, cells]) =>
    el(
      "tr",
      {},
      el("th", { scope: "row" }, row),
      [...columns].map((column) => changedCell(cells.get(column))),
    ),
  );
  return valuesIn("cells", "Changed cells", ["Row", ...columns], bodies);
}

function viewKind(hunk) {
  return cellOf(hunk) !== null ? cellTable : isValue(hunk) ? valueTable : textTable;
}

/**
 * How hunks look: cells in a table, other values by their place, everything else line by line.
 * `context` tells what stands between them: {known, folds}. Nothing differs there if "all" hunks
 * are here, or before the "first" one; with "none", nothing is told. `folds` hold the lines.
 */
export function hunkView(hunks, isSplit, context) {
  const views = [];
  for (let i = 0; i < hunks.length;) {
    const show = viewKind(hunks[i]);
    const run = [];
    while (i < hunks.length && viewKind(hunks[i]) === show) {
      run.push(hunks[i++]);
    }
    views.push(show(run, isSplit, context));
  }
  return el("div.difference", {}, views);
}

/** The rules that mask stretches of these hunks, with how often: [[rule, count]]. */
export function maskCounts(hunks) {
  const counts = new Map();
  for (const span of hunks.flatMap((hunk) => hunk.lines.flatMap((line) => line.spans))) {
    if (span.kind === "masked") {
      counts.set(span.rule, (counts.get(span.rule) ?? 0) + 1);
    }
  }
  return [...counts];
}

export function hiddenHunks(difference) {
  const left = difference.hunkCount - difference.hunks.length;
  return left > 0 ? `${grouped(left)} more places differ` : null;
}
