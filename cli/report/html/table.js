import { button, el } from "./dom.js";
import { decisionCells } from "./decide.js";
import { changesText } from "./groups.js";
import { addressOf, matching, sorted, valuesOf, withField } from "./query.js";
import { countOf, grouped, secondsText, visible } from "./text.js";
import { badge, FAILURES, isFailure, VERDICT_NAMES } from "./verdicts.js";

const BATCH = 50; // rows that are added at a time

/** The query that a reader starts with. */
export function firstQuery(rows) {
  return rows.some((row) => isFailure(row.verdict)) ? FAILURES : "";
}

function selectOf(label, name, values, words, onchange) {
  const select = el(
    "select",
    { "aria-label": label, onchange: () => onchange(select.value) },
    el("option", { value: "" }, words),
    values.map((value) => el("option", { value }, visible(value))),
  );
  select.dataset.field = name;
  return select;
}

const COLUMNS = [
  ["verdict", "Verdict"],
  ["name", "Pair"],
  ["format", "Format"],
  ["change", "Changes"],
  ["time", "Time"],
];

const MOST_PRINTED_ROWS = 2000;

function changesOf(row) {
  return row.groups.length > 0
    ? changesText(row.groups)
    : row.places > 0
      ? countOf(row.places, "place")
      : "";
}

/** The section of all pairs. */
export class PairTable {
  constructor(model, decisions, onState) {
    this.model = model;
    this.decisions = decisions;
    this.onState = onState;
    this.rows = [];
    this.refreshes = []; // of the rows that are there
    this.input = el("input", {
      type: "search",
      id: "query",
      placeholder: "text, verdict:differs, format:html …",
      autocomplete: "off",
      spellcheck: "false",
      "aria-label": "Filter pairs",
      oninput: () => this.onState({ q: this.input.value }),
    });
    this.body = el("tbody", {});
    this.status = el("p.status", { role: "status" });
    this.more = button("Show more", () => this.addRows(BATCH), { class: "show-more" });
    this.headings = COLUMNS.map(([order, label]) => this.heading(order, label));
    this.selects = this.makeSelects();
    this.watchEnd();
    decisions.onChange(() => this.refreshes.forEach((refresh) => refresh()));
  }

  heading(order, label) {
    const sort = () =>
      this.onState({
        sort: this.order === order ? `-${order}` : this.order === `-${order}` ? undefined : order,
      });
    const head = el(`th.by-${order}`, { scope: "col" }, button(label, sort));
    head.dataset.order = order;
    return head;
  }

  makeSelects() {
    const { rows } = this.model;
    const values = (field) => [...new Set(rows.map((row) => row[field]))].sort();
    const choose = (field) => (value) =>
      this.onState({ q: withField(this.input.value, field, value ? [value] : []) });
    const verdicts = VERDICT_NAMES.filter((name) => rows.some((row) => row.verdict === name));
    return [
      selectOf("Verdict", "verdict", verdicts, "Any verdict", choose("verdict")),
      selectOf("Format", "format", values("format"), "Any format", choose("format")),
      selectOf("Folder", "folder", values("folder"), "Any folder", choose("folder")),
    ];
  }

  /** Adds rows when the reader comes near the end of those that are there. */
  watchEnd() {
    const observer = new IntersectionObserver(
      (entries) => entries.some((e) => e.isIntersecting) && this.addRows(BATCH),
      { rootMargin: "400px" },
    );
    observer.observe(this.more);
    addEventListener("beforeprint", () => this.addRows(MOST_PRINTED_ROWS));
  }

  element() {
    const head = el("thead", {}, el(
        "tr",
        {},
        this.headings,
        el("th.decide", { scope: "col" }, "Decision"),
        el("th.viewed", { scope: "col" }, "Viewed"),
      ));
    return el(
      "section",
      { "aria-labelledby": "pairs" },
      el("h2", { id: "pairs" }, "Pairs"),
      el(
        "div.filter",
        { role: "search" },
        this.input,
        this.selects,
        button("All pairs", () => this.onState({ q: "" })),
        button("Not passed", () => this.onState({ q: FAILURES })),
      ),
      this.status,
      el("div.all-pairs", {}, el("table.list", {}, head, this.body)),
      this.more,
    );
  }

  /** Shows the rows that a query and an order ask for. */
  show(query, order) {
    this.query = query;
    this.order = order;
    if (this.input.value !== query) {
      this.input.value = query;
    }
    for (const select of this.selects) {
      select.value = valuesOf(query, select.dataset.field)[0] ?? "";
    }
    for (const head of this.headings) {
      const direction =
        order === head.dataset.order
          ? "ascending"
          : order === `-${head.dataset.order}`
            ? "descending"
            : null;
      direction ? head.setAttribute("aria-sort", direction) : head.removeAttribute("aria-sort");
    }
    this.rows = sorted(matching(this.model.rows, query), order);
    const all = this.model.rows.length;
    this.status.textContent =
      this.rows.length === all
        ? countOf(all, "pair")
        : `${grouped(this.rows.length)} of ${countOf(all, "pair")}`;
    this.body.replaceChildren();
    this.refreshes = [];
    this.addRows(BATCH);
  }

  addRows(most) {
    const from = this.body.childElementCount;
    this.body.append(...this.rows.slice(from, from + most).map((row) => this.rowElement(row)));
    this.more.hidden = this.body.childElementCount >= this.rows.length;
  }

  addressOf(row) {
    return addressOf({ pair: row.id, q: this.query, sort: this.order === "run" ? undefined : this.order });
  }

  rowElement(row) {
    const link = el("a", { href: this.addressOf(row), "data-item": true }, row.name || row.folder);
    const { cells, refresh } = decisionCells(this.decisions, row);
    const element = el(
      "tr",
      {},
      el("td", {}, badge(row.verdict)),
      el("td.name", {}, link, el("span.folder", {}, row.folder)),
      el("td.format", {}, row.format),
      el("td.what", {}, changesOf(row)),
      el("td.time", {}, secondsText(row.seconds)),
      cells,
    );
    const refreshAll = () => {
      refresh();
      element.classList.toggle("is-viewed", row.isViewed);
    };
    refreshAll();
    this.refreshes.push(refreshAll);
    return element;
  }
}
