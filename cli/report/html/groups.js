import { loadPair } from "./data.js";
import { button, el, shown } from "./dom.js";
import { hunkView } from "./hunks.js";
import { countOf, grouped, shortened } from "./text.js";

const FEW_GROUPS = 4; // so many are shown open
const MOST_GROUPS = 60; // so many are listed before the reader asks for more

/** A change as "removed → added", cut to what fits a line. */
export function changeText(group) {
  const most = 120;
  const side = (kind, label, text) =>
    text === "" ? null : el(kind, { "aria-label": label }, shown(shortened(text, most)));
  const removed = side("del", "removed", group.removed);
  const added = side("ins", "added", group.added);
  if (!removed && !added) {
    return el("span.change", {}, "no words changed");
  }
  return el("span.change", {}, removed, removed && added ? el("span.arrow", {}, " → ") : null, added);
}

/** One sentence that tells whether many failures are one change. */
function gist(groups, rows) {
  const failing = rows.filter((row) => row.verdict !== "passed").length;
  const largest = groups[groups.length - 1];
  const count = largest.pairs.length;
  const others = groups.length - 1;
  if (groups.length === 1 && count === failing) {
    return count === 1 ? "One change, in one pair." : `All ${countOf(count, "pair")} show one and the same change.`;
  }
  if (count < 3 || count * 5 < failing) {
    return `${countOf(groups.length, "different change")}, rarest first.`;
  }
  return `${grouped(count)} of ${countOf(failing, "pair")} that did not pass show one and the same change. ` +
    (others === 1 ? "There is 1 other change." : `There are ${grouped(others)} other changes, rarest first.`);
}

/** The first hunk of the first pair of a group. */
async function firstHunk(model, group) {
  const pair = await loadPair(model.blocks, group.pairs[0]);
  const hunks = pair.difference?.hunks ?? [];
  const hunk = hunks.find((each) => each.group === group.id);
  return hunk ? hunkView([hunk], false) : null;
}

function pairLinks(model, group, actions) {
  const most = 5;
  const links = group.pairs.slice(0, most).map((number) => {
    const row = model.rows[number];
    return el("li", {}, el("a", { href: actions.pairAddress(row) }, shown(row.name)), " ",
      el("span.folder", {}, shown(row.folder)));
  });
  const all = group.pairs.length > most
    ? button(`Show all ${grouped(group.pairs.length)} pairs`, () => actions.showGroup(group)) : null;
  return [el("ul.pairs", {}, links), all];
}

function groupItem(model, group, actions, isOpen) {
  const first = model.rows[group.pairs[0]];
  const body = el("div.body", {});
  const item = el("details.group", { id: `group-${group.id}` },
    el("summary", { "data-item": true },
      el("span.count", {}, countOf(group.pairs.length, "pair")),
      changeText(group),
      el("span.example", {}, el("span.format", {}, first.format), " ", shown(first.name))),
    body);
  const fill = async () => {
    if (item.open && body.childElementCount === 0) {
      const links = pairLinks(model, group, actions);
      body.append(...links.filter(Boolean));
      const hunk = await firstHunk(model, group);
      body.prepend(hunk ?? "");
    }
  };
  item.addEventListener("toggle", fill);
  item.open = isOpen;
  return item;
}

/** Pairs that did not pass and are in no group must not go unseen. */
function ungrouped(model, actions) {
  const count = model.rows.filter((row) => row.verdict !== "passed" && row.groups.length === 0).length;
  return count === 0 ? null
    : el("p.ungrouped", {}, button(`${countOf(count, "pair")} that did not pass for other reasons`,
        actions.showUngrouped, { class: "link" }));
}

/** The section of all changes, rarest first; null when there are none. */
export function groupsSection(model, actions) {
  const { groups, rows } = model;
  if (groups.length === 0) {
    return null;
  }
  const list = el("div.groups", {});
  const add = (from, to) => list.append(...groups.slice(from, to).map((g) => groupItem(model, g, actions, groups.length <= FEW_GROUPS)));
  add(0, MOST_GROUPS);
  const more = groups.length <= MOST_GROUPS ? null
    : button(`Show ${grouped(groups.length - MOST_GROUPS)} more changes`, () => {
        add(MOST_GROUPS, groups.length);
        more.remove();
      });
  let isOpening = true;
  const toggleAll = () => {
    list.querySelectorAll("details.group").forEach((item) => (item.open = isOpening));
    isOpening = !isOpening;
    toggle.textContent = isOpening ? "Open all" : "Close all";
  };
  const toggle = groups.length <= FEW_GROUPS ? null : button("Open all", toggleAll);
  return el("section", { "aria-labelledby": "changes" },
    el("div.heading", {}, el("h2", { id: "changes" }, "Changes"), toggle),
    el("p.gist", {}, gist(groups, rows)), list, more, ungrouped(model, actions));
}
