// Texts of records, made safe to show. A text comes from outputs that are under test, so it may hold
// anything: bytes that are no UTF-8, characters that hide or turn others around.

const HIDDEN =
  /[\0-\x08\x0b-\x1f\x7f-\x9f\xad\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ud800-\udfff\ufeff\ufff9-\uffff]|[\u{e0000}-\u{e0fff}]/gu;
const INVALID_BYTE = 0xdc00; // + the byte: a lone surrogate, which no valid text holds

function decodeBytes(bytes) {
  const decoder = new TextDecoder("utf-8", { fatal: true, ignoreBOM: true });
  let text = "";
  for (let i = 0; i < bytes.length;) {
    const lead = bytes[i];
    const length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    try {
      text += decoder.decode(bytes.subarray(i, i + length));
      i += length;
    } catch {
      text += String.fromCharCode(INVALID_BYTE + lead);
      ++i;
    }
  }
  return text;
}

/** A text of a record as a string. A record writes one that is no UTF-8 as the hex of its bytes. */
export function decodeText(text) {
  if (typeof text === "string") {
    return text;
  }
  const pairs = text?.hex?.match(/../g) ?? [];
  return decodeBytes(Uint8Array.from(pairs, (pair) => parseInt(pair, 16)));
}

function escapeOf(character) {
  const code = character.codePointAt(0);
  const byte = code < 0x80 ? code : code >= 0xdc80 && code <= 0xdcff ? code - INVALID_BYTE : -1;
  const hex = (number, digits) => number.toString(16).toUpperCase().padStart(digits, "0");
  return byte >= 0 ? `\\x${hex(byte, 2)}` : `\\u{${hex(code, 4)}}`;
}

/** Cuts a text into pieces [text, isEscape]; escapes stand for characters that cannot be seen. */
export function visiblePieces(text) {
  const pieces = [];
  let from = 0;
  for (const match of text.matchAll(HIDDEN)) {
    pieces.push([text.slice(from, match.index), false], [escapeOf(match[0]), true]);
    from = match.index + match[0].length;
  }
  pieces.push([text.slice(from), false]);
  return pieces.filter(([piece]) => piece !== "");
}

/** A text with all that cannot be seen as escapes, for places that take no elements. */
export function visible(text) {
  return text.replace(HIDDEN, escapeOf);
}

/** The start of a text, and "…" if there is more. */
export function shortened(text, most) {
  return text.length > most ? `${text.slice(0, most).trimEnd()}…` : text;
}

/** A word of a command line, quoted for a POSIX shell; for bash if it holds hidden characters. */
export function shellWord(word) {
  if (/^[\w@%+=:,./-]+$/.test(word)) {
    return word;
  }
  const quoted = word.replace(/'/g, "'\\''");
  if (visible(word) === word && !word.includes("\n") && !word.includes("\t")) {
    return `'${quoted}'`;
  }
  const encoder = new TextEncoder();
  const bytesOf = (c) => {
    const code = c.codePointAt(0);
    return code >= 0xdc80 && code <= 0xdcff ? [code - INVALID_BYTE] : [...encoder.encode(c)];
  };
  const bytes = Array.from(word, (c) =>
    /[\w@%+=:,./ -]/.test(c)
      ? c
      : bytesOf(c)
          .map((b) => `\\x${b.toString(16).padStart(2, "0")}`)
          .join(""),
  );
  return `$'${bytes.join("")}'`;
}

const GROUPED = new Intl.NumberFormat("en-US");

export function grouped(number) {
  return GROUPED.format(number);
}

/** "1 pair", "2,000 pairs". */
export function countOf(count, noun) {
  return `${grouped(count)} ${noun}${count === 1 ? "" : "s"}`;
}

export function bytesText(size) {
  return size < 10_000
    ? countOf(size, "byte")
    : size < 1e6
      ? `${(size / 1e3).toFixed(1)} kB`
      : `${(size / 1e6).toFixed(1)} MB`;
}

export function secondsText(seconds) {
  if (seconds < 1) {
    return `${(seconds * 1000).toFixed(seconds < 0.01 ? 1 : 0)} ms`;
  }
  return seconds < 120
    ? `${seconds.toFixed(1)} s`
    : `${Math.floor(seconds / 60)} min ${Math.round(seconds % 60)} s`;
}
