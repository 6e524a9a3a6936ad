import { el } from "./dom.js";

// Each verdict has a sign of its own, so that colour never tells alone.
const VERDICTS = {
  passed: { sign: "✓", kind: "good", words: "passed" },
  differs: { sign: "≠", kind: "bad", words: "differ" },
  missing: { sign: "∅", kind: "bad", words: "missing" },
  failed: { sign: "✗", kind: "bad", words: "failed" },
  partly: { sign: "◐", kind: "odd", words: "partly compared" },
  error: { sign: "!", kind: "odd", words: "errors" },
  "timed-out": { sign: "◷", kind: "odd", words: "timed out" },
  crashed: { sign: "☇", kind: "odd", words: "crashed" },
  known: { sign: "≈", kind: "odd", words: "known" },
  stale: { sign: "↺", kind: "odd", words: "stale" },
  "not run": { sign: "–", kind: "odd", words: "not run" },
};

/** In the order in which to name them. */
export const VERDICT_NAMES = Object.keys(VERDICTS);

export function verdictOf(name) {
  return VERDICTS[name] ?? { sign: "?", kind: "odd", words: name };
}

/** Whether a pair needs attention: it neither passed, nor is it known why it did not. */
export function isFailure(name) {
  return name !== "passed" && name !== "known";
}

/** What asks for pairs that need attention. */
export const FAILURES = "-verdict:passed,known";

/** The sign and name of a verdict. */
export function badge(name) {
  const { sign, kind } = verdictOf(name);
  return el(`span.badge.${kind}`, {}, el("span.sign", { "aria-hidden": "true" }, sign), name);
}
