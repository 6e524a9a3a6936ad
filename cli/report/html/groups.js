import { bundleCommand } from "./commands.js";
import { loadPair } from "./data.js";
import { bundleControls } from "./decide.js";
import { button, el } from "./dom.js";
import { hunkView } from "./hunks.js";
import { countOf, grouped, shortened } from "./text.js";
import { isFailure } from "./verdicts.js";

const FEW_BUNDLES = 4; // so many are shown open
const MOST_BUNDLES = 60; // so many are listed before the reader asks for more

/** A change as "removed → added", cut to what fits a line. */
function changeText(group) {
  const most = 120;
  const side = (kind, label, text) =>
    text === "" ? null : el(kind, { "aria-label": label }, shortened(text, most));
  const removed = side("del", "removed", group.removed);
  const added = side("ins", "added", group.added);
  if (!removed && !added) {
    return el("span.change", {}, "no words changed");
  }
  return el("span.change", {}, removed, removed && added ? el("span.arrow", {}, " → ") : null, added);
}

/** The first of several changes, and how many more there are. */
export function changesText(groups) {
  const more = groups.length - 1;
  return el(
    "span.changes",
    {},
    changeText(groups[0]),
    more > 0 ? el("span.more", {}, ` and ${grouped(more)} more`) : null,
  );
}

/** A sentence that tells whether many failures are one change. */
function gist(bundles, rows, actions) {
  const failing = rows.filter((row) => isFailure(row.verdict)).length;
  const largest = bundles[bundles.length - 1];
  const count = largest.pairs.length;
  const others = bundles.length - 1;
  if (count < 3 || count * 5 < failing) {
    return el("p.gist", {}, `${countOf(bundles.length, "different change")}, rarest first.`);
  }
  const same =
    count === failing
      ? `All ${countOf(count, "pair")}`
      : `${grouped(count)} of ${countOf(failing, "pair")}`;
  const rest =
    others === 0
      ? null
      : others === 1
        ? "There is one other change:"
        : `The other ${grouped(others)} changes, rarest first:`;
  return el(
    "p.gist",
    {},
    `${same} that did not pass show the same change: `,
    button(changesText(largest.groups), () => actions.showGroup(largest.groups[0]), { class: "link" }),
    ". ",
    rest,
  );
}

/** The first hunks of the first pair, one for each of its changes, up to a few. */
async function firstHunks(model, { groups, pairs }) {
  const most = 3;
  const pair = await loadPair(model.blocks, pairs[0]);
  const hunks = pair.difference?.hunks ?? [];
  const found = groups.map((group) => hunks.find((hunk) => hunk.groups.includes(group.id))).filter(Boolean);
  return found.length > 0 ? hunkView(found.slice(0, most), false) : null;
}

function pairLinks(model, { groups, pairs }, actions) {
  const most = 5;
  const links = pairs.slice(0, most).map((number) => {
    const row = model.rows[number];
    return el(
      "li",
      {},
      el("a", { href: actions.pairAddress(row) }, row.name),
      " ",
      el("span.folder", {}, row.folder),
    );
  });
  const all =
    pairs.length > most
      ? button(`Show all ${grouped(pairs.length)} pairs`, () => actions.showGroup(groups[0]))
      : null;
  return [el("ul.pairs", {}, links), all];
}

function bundleItem(model, bundle, actions, isOpen) {
  const { decisions } = actions;
  const first = model.rows[bundle.pairs[0]];
  const controls = decisions.isPossible ? bundleControls(decisions, model, bundle) : null;
  const body = el("div.body", {});
  const item = el(
    "details.group",
    {},
    el(
      "summary",
      { "data-item": true },
      el("span.count", {}, countOf(bundle.pairs.length, "pair")),
      changesText(bundle.groups),
      el("span.example", {}, controls?.mark, el("span.format", {}, first.format), " ", first.name),
    ),
    body,
  );
  const fill = async () => {
    if (item.open && body.childElementCount === 0) {
      const links = pairLinks(model, bundle, actions).filter(Boolean);
      // Nobody decides on what is not shown.
      controls?.element.append(bundleCommand(model, bundle) ?? "");
      body.append(el("div.foot", {}, links, controls?.element));
      body.prepend((await firstHunks(model, bundle)) ?? "");
    }
  };
  item.addEventListener("toggle", fill);
  decisions.onChange(() => controls?.refresh());
  item.open = isOpen;
  return item;
}

/** Pairs that did not pass and are in no group must not go unseen. */
function ungrouped(model, actions) {
  const count = model.rows.filter((row) => isFailure(row.verdict) && row.groups.length === 0).length;
  return count === 0
    ? null
    : el(
        "p.ungrouped",
        {},
        button(`${countOf(count, "pair")} that did not pass for other reasons`, actions.showUngrouped, {
          class: "link",
        }),
      );
}

/** The section of all changes, rarest first; null when there are none. */
export function groupsSection(model, actions) {
  const { bundles, rows } = model;
  if (bundles.length === 0) {
    return null;
  }
  const isFew = bundles.length <= FEW_BUNDLES;
  const list = el("div.groups", {});
  const add = (from, to) =>
    list.append(...bundles.slice(from, to).map((each) => bundleItem(model, each, actions, isFew)));
  add(0, MOST_BUNDLES);
  const more =
    bundles.length <= MOST_BUNDLES
      ? null
      : button(`Show ${grouped(bundles.length - MOST_BUNDLES)} more changes`, () => {
          add(MOST_BUNDLES, bundles.length);
          more.remove();
        });
  let isOpening = true;
  const toggleAll = () => {
    list.querySelectorAll("details.group").forEach((item) => (item.open = isOpening));
    isOpening = !isOpening;
    toggle.textContent = isOpening ? "Open all" : "Close all";
  };
  const toggle = isFew ? null : button("Open all", toggleAll);
  return el(
    "section",
    { "aria-labelledby": "changes" },
    el("div.heading", {}, el("h2", { id: "changes" }, "Changes"), gist(bundles, rows, actions), toggle),
    list,
    more,
    ungrouped(model, actions),
  );
}
