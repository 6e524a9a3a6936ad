import { button, copyLine, el } from "./dom.js";
import { canAccept } from "./decisions.js";
import { countOf, grouped } from "./text.js";
import { acceptCommand } from "./commands.js";
import { isFailure } from "./verdicts.js";

// The controls for decisions. Each comes with a function that shows what has been decided since.

const FILE = "decisions.jsonl";

function choices(words, onChoose) {
  return Object.entries(words).map(([fix, [label, attributes]]) => {
    const choice = button(label, () => onChoose(fix), { "aria-pressed": "false", ...attributes });
    choice.dataset.fix = fix;
    return choice;
  });
}

function showChoice(buttons, fix) {
  for (const each of buttons) {
    each.setAttribute("aria-pressed", String(each.dataset.fix === fix));
  }
}

/** Buttons and box for a pair, and what shows in them what is decided: {buttons, box, refresh}. */
function controlsOf(decisions, row, { accept, fault, viewed = {} }) {
  const words = canAccept(row) ? { accept, fault } : { fault };
  const isOffered = decisions.isPossible && isFailure(row.verdict);
  const buttons = isOffered ? choices(words, (fix) => decisions.togglePair(row, fix)) : [];
  const onchange = () => decisions.toggleViewed(row);
  const box = el("input", { type: "checkbox", onchange, ...viewed });
  const refresh = () => {
    showChoice(buttons, row.fix);
    box.checked = row.isViewed;
  };
  refresh();
  return { buttons, box, refresh };
}

/** Cells of the table for what to do with a pair: {cells, refresh}. */
export function decisionCells(decisions, row) {
  const on = row.name || row.folder;
  const { buttons, box, refresh } = controlsOf(decisions, row, {
    accept: ["Accept", { "aria-label": `Accept ${on}` }],
    fault: ["Fault", { "aria-label": `Real fault: ${on}` }],
    viewed: { "aria-label": `Viewed: ${on}` },
  });
  return { cells: [el("td.decide", {}, buttons), el("td.viewed", {}, box)], refresh };
}

/** The controls on the page of a pair. */
export function pairControls(decisions, row) {
  const { buttons, box, refresh } = controlsOf(decisions, row, {
    accept: ["Accept the output", {}],
    fault: ["Real fault", {}],
  });
  const controls = el("div.decide", {}, buttons, el("label", {}, box, " Viewed"));
  decisions.onChange(refresh, controls);
  return controls;
}

/** What a decision on a group comes to, in words. */
function effectOf(fix, rows) {
  const done = rows.filter((row) => row.fix === fix).length;
  const left = rows.length - done;
  const chosen = fix === "accept" ? "to accept" : "marked as real faults";
  const others = fix === "accept" ? "show other changes too, or " : "";
  return left === 0
    ? `${countOf(done, "pair")} ${chosen}.`
    : `${countOf(done, "pair")} ${chosen}; ${grouped(left)} left: they ${others}were decided one by one.`;
}

/** The controls of changes that the same pairs show: {element, mark, refresh}. */
export function bundleControls(decisions, model, bundle) {
  const rows = bundle.pairs.map((number) => model.rows[number]);
  const words = rows.some(canAccept) ? { accept: ["Accept", {}] } : {};
  words.fault = ["Real fault", {}];
  const buttons = choices(words, (fix) => decisions.toggleBundle(bundle, fix));
  const effect = el("span.effect", {});
  const mark = el("span.mark", {});
  const refresh = () => {
    const fix = decisions.fixOfBundle(bundle);
    showChoice(buttons, fix);
    effect.textContent = fix === "none" ? "" : effectOf(fix, rows);
    mark.textContent = fix === "none" ? "" : fix === "accept" ? "✓ accept" : "✗ fault";
  };
  refresh();
  return { element: el("div.decide", {}, buttons, effect), mark, refresh };
}

function download(text) {
  const address = URL.createObjectURL(new Blob([text], { type: "application/jsonl" }));
  el("a", { href: address, download: FILE }).click();
  setTimeout(() => URL.revokeObjectURL(address), 60_000);
}

/** The bar that tells how much is decided, and saves it. */
export function decisionBar(decisions, model) {
  const status = el("span", { role: "status" });
  const next = el("div.next", {});
  const save = button(`Save as ${FILE}`, async () => {
    const { text, left } = await decisions.file();
    download(text);
    next.replaceChildren(
      copyLine("Then run", acceptCommand(model, ["--list", FILE])),
      left > 0
        ? el("p.note", {}, `${countOf(left, "pair")} not saved: the record lacks the hashes of their files.`)
        : "",
    );
  });
  const forget = button("Forget all", () => decisions.forget(), { class: "link" });
  const bar = el("section.decisions", { "aria-label": "Decisions" }, status, save, forget, next);
  const refresh = () => {
    const [accepted, faults] = ["accept", "fault"].map((fix) => decisions.decided(fix).length);
    bar.hidden = accepted + faults === 0;
    save.disabled = bar.hidden;
    status.textContent =
      `${countOf(accepted, "pair")} to accept, ${countOf(faults, "real fault")}.` +
      (decisions.isKept ? "" : " This browser does not keep them: save them before you leave.");
    next.replaceChildren();
  };
  refresh();
  decisions.onChange(refresh);
  return bar;
}
