import { pairCommands } from "./commands.js";
import { loadFolds, loadPair, loadPictures } from "./data.js";
import { pairControls } from "./decide.js";
import { button, el, shown } from "./dom.js";
import { changesText } from "./groups.js";
import { hiddenHunks, hunkView, maskCounts } from "./hunks.js";
import { pictureViewer } from "./pictures.js";
import { bytesText, countOf, decodeText, grouped, secondsText } from "./text.js";
import { badge, verdictOf } from "./verdicts.js";

const MOST_PRINTED = 20_000; // characters of what was printed that are shown at first

function fileRow(label, name, facts) {
  const size = facts.size === undefined ? "" : bytesText(facts.size);
  const evidence = facts.evidence && facts.evidence !== "kept" ? ` (not kept: ${facts.evidence})` : "";
  return [el("dt", {}, label), el("dd", {}, el("code", {}, decodeText(name)), ` ${size}${evidence}`)];
}

function facts(pair) {
  const times =
    pair.cpuSeconds > 0
      ? `${secondsText(pair.seconds)}, processor ${secondsText(pair.cpuSeconds)}`
      : secondsText(pair.seconds);
  const rules = pair.rules ?? [];
  return el(
    "dl.facts",
    {},
    fileRow("Master", pair.master, pair.masterFile),
    fileRow("Output", pair.output, pair.outputFile),
    el("dt", {}, "Report"),
    el("dd", {}, el("code", {}, decodeText(pair.report))),
    el("dt", {}, "Format"),
    el("dd", {}, pair.format, pair.subFolder ? [", sub-folder ", decodeText(pair.subFolder)] : null),
    el("dt", {}, "Time"),
    el("dd", {}, times),
    rules.length > 0 ? [el("dt", {}, "Rules that changed the text"), el("dd", {}, rules.join(", "))] : null,
  );
}

/** A warning that a pass rests on a mask that hides a large part of a file. */
function maskWarning({ mask }) {
  if (!mask) {
    return null;
  }
  const what = mask.rule ? `One match of ${mask.rule} masks` : "The rules together mask";
  return el(
    "p.notice.odd",
    {},
    `${what} ${mask.percent} % of the ${mask.file} (lines ${grouped(mask.firstLine)} to ` +
      `${grouped(mask.lastLine)}), and the files differ there: nothing there was compared.`,
  );
}

/** Why the suite's file accepts the difference for the time being; a link is no more than text. */
function knownReasons({ known }) {
  return (known?.reasons ?? []).map(({ why, until, link, place }) =>
    el(
      "p.notice.odd",
      {},
      `${verdictOf(known.verdict).sign} ${known.verdict}, known until ${until}: ${decodeText(why)}`,
      el("br", {}),
      [place, link].filter(Boolean).map(decodeText).join(", "),
    ),
  );
}

function printed(pair) {
  const text = decodeText(pair.printed ?? "");
  if (text === "") {
    return null;
  }
  const pre = el("pre", { tabindex: 0, "aria-label": "What was printed" }, text.slice(0, MOST_PRINTED));
  const more =
    text.length <= MOST_PRINTED
      ? null
      : button(`Show ${countOf(text.length - MOST_PRINTED, "more character")}`, () => {
          pre.append(shown(text.slice(MOST_PRINTED)));
          more.remove();
        });
  return el(
    "section",
    { "aria-labelledby": "printed" },
    el("h2", { id: "printed" }, "Printed by the comparison"),
    pre,
    more,
  );
}

/** The difference of one pair, with the switches for how to see it. */
class DifferenceSection {
  constructor(pair, pictures, folds, view, onState) {
    Object.assign(this, { pair, pictures, folds, view, onState });
    this.difference = pair.difference ?? { hunks: [], notes: [], hunkCount: 0 };
    this.place = el("div", {});
    this.masks = maskCounts(this.difference.hunks);
  }

  switches() {
    const { hunks } = this.difference;
    const isText = hunks.some((hunk) => hunk.place === "" || hunk.lines.length > 2);
    const split = button(
      "Side by side",
      () => this.onState({ view: this.isSplit() ? "unified" : "split" }),
      { id: "split-switch", "aria-pressed": String(this.isSplit()) },
    );
    const masks = button(
      "Hide masked text",
      () => {
        const isHidden = this.place.classList.toggle("masks-hidden");
        masks.setAttribute("aria-pressed", String(isHidden));
      },
      { id: "mask-switch", "aria-pressed": "false" },
    );
    return el("div.switches", {}, isText ? split : null, this.masks.length > 0 ? masks : null);
  }

  isSplit() {
    return this.view ? this.view === "split" : innerWidth >= 1100;
  }

  element() {
    const { difference, pair } = this;
    const message = decodeText(pair.message ?? "");
    const hidden = hiddenHunks(difference);
    const notes = difference.notes.map((note) => el("p.note", {}, decodeText(note)));
    const masked = this.masks.map(([rule, count]) => `${rule} (${count})`).join(", ");
    if (difference.hunks.length > 0) {
      const known = difference.hunks.length === difference.hunkCount ? "all" : "first";
      this.place.append(hunkView(difference.hunks, this.isSplit(), { known, folds: this.folds }));
    }
    return el(
      "section.differences",
      { "aria-labelledby": "differences" },
      el("div.heading", {}, el("h2", { id: "differences" }, "Difference"), this.switches()),
      message ? el("p.message", {}, message) : null,
      notes,
      difference.coarse
        ? el("p.note", {}, "Shown coarsely: the files are too large or too different for more detail.")
        : null,
      this.pictures ? pictureViewer(this.pictures) : null,
      this.place,
      masked ? el("p.note", {}, `Not compared, because a rule masks it: ${masked}.`) : null,
      hidden ? el("p.note", {}, `${hidden}; the command below shows all of them.`) : null,
    );
  }
}

function navigation(table, row, onState) {
  const index = table.rows.indexOf(row);
  const neighbour = (step, id, label, sign) => {
    const other = index < 0 ? undefined : table.rows[index + step];
    const attributes = { id, "aria-label": label };
    return other
      ? el("a.step", { ...attributes, href: table.addressOf(other) }, sign)
      : el("a.step", { ...attributes, role: "link", "aria-disabled": "true" }, sign);
  };
  return el(
    "nav.steps",
    { "aria-label": "Pairs" },
    button("← All pairs", () => onState({ pair: undefined, view: undefined }), { id: "back" }),
    index >= 0 ? el("span.position", {}, `${index + 1} of ${table.rows.length}`) : null,
    neighbour(-1, "previous", "Previous pair", "‹ Previous"),
    neighbour(1, "next", "Next pair", "Next ›"),
  );
}

/** Where else the changes of this pair are seen. */
function groupLinks(row, actions) {
  const shared = row.groups.filter((group) => group.pairs.length > 1);
  if (shared.length === 0) {
    return row.groups.length === 0 ? null : el("p.same", {}, "No other pair shows this change.");
  }
  const links = shared.slice(0, 10).map((group) =>
    el(
      "li",
      {},
      button(
        `Same change in ${countOf(group.pairs.length - 1, "other pair")}`,
        () => actions.showGroup(group),
        { class: "link" },
      ),
      " ",
      changesText([group]),
    ),
  );
  return el("ul.same", {}, links);
}

/** The page of one pair. */
export async function pairPage(model, table, row, view, actions) {
  const [pair, folds, pictures] = await Promise.all([
    loadPair(model.blocks, row.number),
    loadFolds(model.blocks, row.number),
    loadPictures(row.number),
  ]);
  const differs = pair.verdict !== "passed" || pair.message || pair.difference;
  return [
    navigation(table, row, actions.setState),
    el(
      "header.pair",
      {},
      badge(row.verdict),
      el("h1", {}, row.name || row.folder),
      el("span.folder", {}, row.folder),
      groupLinks(row, actions),
      pairControls(actions.decisions, row),
    ),
    ...knownReasons(pair),
    maskWarning(pair),
    differs ? new DifferenceSection(pair, pictures, folds, view, actions.setState).element() : null,
    printed(pair),
    pairCommands(model, row, pair),
    el(
      "section",
      { "aria-labelledby": "facts" },
      el("h2", { id: "facts" }, "About this pair"),
      facts(pair),
    ),
  ];
}
