// What the reader looks for. A query is words, all of which must apply: "verdict:differs,missing",
// "format:html", "folder:\"a b\"", "group:1f00", "decision:accept", "viewed:yes", "-verdict:passed", or text of a name or a change.

const FIELDS = ["verdict", "format", "folder", "group", "decision", "viewed"];

/** The words of a query: [{field, values, isNegated}]; `field` is "text" for plain ones. */
export function parseQuery(query) {
  const words = query.match(/(?:"[^"]*"|[^\s"])+/g) ?? [];
  return words.map((word) => {
    const isNegated = word.startsWith("-") && word.length > 1;
    const rest = isNegated ? word.slice(1) : word;
    const colon = rest.indexOf(":");
    const name = rest.slice(0, Math.max(colon, 0)).toLowerCase();
    const field = FIELDS.includes(name) ? name : "text";
    const value = (field === "text" ? rest : rest.slice(colon + 1)).replace(/"/g, "");
    const values = field === "text" ? [value.toLowerCase()] : value.split(",");
    return { field, values, isNegated };
  });
}

function wordText({ field, values, isNegated }) {
  const value = values.join(",");
  const quoted = /[\s"]/.test(value) ? `"${value.replace(/"/g, "")}"` : value;
  return `${isNegated ? "-" : ""}${field === "text" ? "" : `${field}:`}${quoted}`;
}

/** The query with `field` set to these values; none: without the field. */
export function withField(query, field, values, isNegated = false) {
  const words = parseQuery(query).filter((word) => word.field !== field);
  if (values.length > 0) {
    words.push({ field, values, isNegated });
  }
  return words.map(wordText).join(" ");
}

/** The values that a query asks for in a field, unless it excludes them. */
export function valuesOf(query, field) {
  return parseQuery(query)
    .filter((word) => word.field === field && !word.isNegated)
    .flatMap((word) => word.values);
}

function haystackOf(row) {
  row.haystack ??= [
    row.folder,
    row.name,
    row.format,
    row.verdict,
    ...row.groups.flatMap((g) => [g.removed, g.added]),
  ]
    .join("\n")
    .toLowerCase();
  return row.haystack;
}

const TESTS = {
  verdict: (row, values) => values.includes(row.verdict),
  format: (row, values) => values.includes(row.format),
  folder: (row, values) => values.some((v) => row.folder === v || row.folder.startsWith(`${v}/`)),
  group: (row, values) =>
    values.some((v) => (v === "none" ? row.groups.length === 0 : row.groups.some((g) => g.id === v))),
  decision: (row, values) => values.includes(row.fix),
  viewed: (row, values) => values.includes(row.isViewed ? "yes" : "no"),
  text: (row, values) => haystackOf(row).includes(values[0]),
};

/** The rows that a query asks for, in their order. */
export function matching(rows, query) {
  const words = parseQuery(query);
  return rows.filter((row) => words.every((w) => TESTS[w.field](row, w.values) !== w.isNegated));
}

const ORDERS = {
  run: null,
  verdict: (a, b) => a.verdict.localeCompare(b.verdict),
  name: (a, b) => (a.name < b.name ? -1 : a.name > b.name ? 1 : 0),
  format: (a, b) => a.format.localeCompare(b.format),
  change: (a, b) => b.places - a.places,
  time: (a, b) => b.seconds - a.seconds,
};

/** Rows by "run", "verdict", "name", "format", "change" or "time"; "-name" turns it round. */
export function sorted(rows, order) {
  const isReversed = order.startsWith("-");
  const compare = ORDERS[isReversed ? order.slice(1) : order] ?? null;
  const result = compare === null ? [...rows] : [...rows].sort(compare);
  return isReversed ? result.reverse() : result;
}

/** What the address asks to show: {pair, q, sort, view}, texts all. */
export function readAddress() {
  return Object.fromEntries(new URLSearchParams(location.hash.slice(1)));
}

export function addressOf(state) {
  const given = Object.entries(state).filter(([, value]) => value !== undefined && value !== null);
  return `#${new URLSearchParams(given)}`;
}
