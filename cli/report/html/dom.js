import { visible, visiblePieces } from "./text.js";

// Elements are made one by one, never from markup: nothing that comes from an output is parsed, and
// whatever text goes into one has its hidden characters made visible.

const READ_ALOUD = ["title", "aria-label"];

function setAttribute(element, name, value) {
  if (value === undefined || value === null || value === false) {
    return;
  }
  if (name.startsWith("on")) {
    element.addEventListener(name.slice(2), value);
  } else {
    element.setAttribute(name, value === true ? "" : READ_ALOUD.includes(name) ? visible(value) : value);
  }
}

/** Text for an element, with what cannot be seen as marked escapes. */
export function shown(text) {
  const fragment = document.createDocumentFragment();
  for (const [piece, isEscape] of visiblePieces(text)) {
    if (isEscape) {
      const escape = document.createElement("span");
      escape.className = "escape";
      escape.textContent = piece;
      fragment.append(escape);
    } else {
      fragment.append(piece);
    }
  }
  return fragment;
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
  const given = children.flat(Infinity).filter((child) => child !== null && child !== undefined);
  element.append(...given.map((child) => (typeof child === "string" ? shown(child) : child)));
  return element;
}

export function button(label, onclick, attributes = {}) {
  return el("button", { type: "button", onclick, ...attributes }, label);
}

/** A button that copies a command. */
export function copyButton(label, command, attributes) {
  const onclick = async () => {
    await copyText(command);
    copy.textContent = "Copied";
    setTimeout(() => (copy.textContent = label), 1500);
  };
  const copy = button(label, onclick, attributes);
  return copy;
}

/** A line to copy, with a button for it. */
export function copyLine(label, command) {
  const copy = copyButton("Copy", command, { "aria-label": `Copy the command: ${label}` });
  return el("div.command", {}, el("span.label", {}, label), el("code", {}, command), copy);
}

async function copyText(text) {
  try {
    await navigator.clipboard.writeText(text);
  } catch {
    const field = el("textarea", { readonly: true }); // no clipboard here: the old way
    field.value = text;
    document.body.append(field);
    field.select();
    document.execCommand("copy");
    field.remove();
  }
}
