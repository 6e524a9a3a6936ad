import { button, el } from "./dom.js";

const HELP = [
  ["j, k", "next, previous item; in a pair, the next or previous pair"],
  ["Enter", "open"],
  ["Esc", "back to all pairs"],
  ["/", "filter the pairs"],
  ["s", "side by side or unified"],
  ["m", "hide or show masked text"],
  ["a, f", "accept the output, or mark a real fault; of a change that is open, of all its pairs"],
  ["v", "viewed"],
  ["?", "this help"],
];

function helpDialog() {
  const dialog = el(
    "dialog.help",
    { "aria-labelledby": "help" },
    el("h2", { id: "help" }, "Keys"),
    el(
      "dl",
      {},
      HELP.map(([keys, text]) => [el("dt", {}, el("kbd", {}, keys)), el("dd", {}, text)]),
    ),
    button("Close", () => dialog.close()),
  );
  return dialog;
}

function moveFocus(step) {
  const items = [...document.querySelectorAll("[data-item]")].filter((item) => item.checkVisibility());
  const index = items.indexOf(document.activeElement);
  const next = items[index < 0 ? (step > 0 ? 0 : items.length - 1) : index + step];
  next?.focus();
  next?.scrollIntoView({ block: "nearest" });
}

/** Presses a control of the pair, or of the row or change that has the focus. */
function pressFor(place, selector) {
  place?.querySelector(selector)?.click();
}

function press(id) {
  document.getElementById(id)?.click();
}

/** Answers keys. `isPairShown` tells what the keys are for. */
export function watchKeys(isPairShown, focusFilter) {
  const dialog = helpDialog();
  document.body.append(dialog);
  const place = () =>
    isPairShown()
      ? document.querySelector("main.page")
      : document.activeElement.closest("table.list tr, details.group[open]");
  const actions = {
    j: () => (isPairShown() ? press("next") : moveFocus(1)),
    k: () => (isPairShown() ? press("previous") : moveFocus(-1)),
    "/": focusFilter,
    s: () => press("split-switch"),
    m: () => press("mask-switch"),
    a: () => pressFor(place(), "[data-fix=accept]"),
    f: () => pressFor(place(), "[data-fix=fault]"),
    v: () => pressFor(place(), ".decide input, .viewed input"),
    "?": () => dialog.showModal(),
    Escape: () => press("back"),
  };
  document.addEventListener("keydown", (event) => {
    const isTyping = event.target.matches("input:not([type=range], [type=checkbox]), select, textarea");
    if (event.ctrlKey || event.altKey || event.metaKey || dialog.open) {
      return;
    }
    if (isTyping && event.key === "Escape") {
      event.target.blur();
    } else if (!isTyping && actions[event.key]) {
      event.preventDefault();
      actions[event.key]();
    }
  });
  return button("Keys (?)", () => dialog.showModal(), { class: "link" });
}
