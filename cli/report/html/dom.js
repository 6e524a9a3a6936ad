import { visiblePieces } from "./text.js";

// Elements are made one by one, never from markup: nothing that comes from an output is parsed.

function setAttribute(element, name, value) {
  if (value === undefined || value === null || value === false) {
    return;
  }
  if (name.startsWith("on")) {
    element.addEventListener(name.slice(2), value);
  } else {
    element.setAttribute(name, value === true ? "" : value);
  }
}

/** Makes an element: el("p.note", {title: "x"}, "text", node, [nodes]); null children are left out. */
export function el(kind, attributes = {}, ...children) {
  const [tag, ...classes] = kind.split(".");
  const element = document.createElement(tag);
  if (classes.length > 0) {
    element.className = classes.join(" ");
  }
  for (const [name, value] of Object.entries(attributes)) {
    setAttribute(element, name, value);
  }
  element.append(...children.flat().filter((child) => child !== null && child !== undefined));
  return element;
}

/** Text from outside, with what cannot be seen as marked escapes. */
export function shown(text) {
  const fragment = document.createDocumentFragment();
  for (const [piece, isEscape] of visiblePieces(text)) {
    fragment.append(isEscape ? el("span.escape", {}, piece) : piece);
  }
  return fragment;
}

export function button(label, onclick, attributes = {}) {
  return el("button", { type: "button", onclick, ...attributes }, label);
}

/** A line to copy, with a button for it. */
export function copyLine(label, command) {
  const code = el("code", {}, command);
  const copy = button("Copy", async () => {
    await copyText(command, code);
    copy.textContent = "Copied";
    setTimeout(() => (copy.textContent = "Copy"), 1500);
  });
  copy.setAttribute("aria-label", `Copy the command: ${label}`);
  return el("div.command", {}, el("span.label", {}, label), code, copy);
}

async function copyText(text, element) {
  try {
    await navigator.clipboard.writeText(text);
  } catch {
    const range = document.createRange(); // no clipboard here: select it for the user
    range.selectNodeContents(element);
    getSelection().removeAllRanges();
    getSelection().addRange(range);
    document.execCommand("copy");
  }
}
