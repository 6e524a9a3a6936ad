import { runCommands } from "./commands.js";
import { el } from "./dom.js";
import { countOf, decodeText, grouped, secondsText, shellWord } from "./text.js";
import { VERDICT_NAMES, verdictOf } from "./verdicts.js";

function headline(run) {
  const { passed = 0, known = 0 } = run.totals;
  const others = run.pairs - passed - known;
  if (others > 0) {
    const left = known > 0 ? `, ${grouped(known)} known` : "";
    return `${grouped(others)} of ${countOf(run.pairs, "pair")} did not pass${left}`;
  }
  if (known > 0) {
    return `${grouped(passed)} of ${countOf(run.pairs, "pair")} passed, ${grouped(known)} known`;
  }
  return run.pairs > 0 ? `All ${countOf(run.pairs, "pair")} passed` : "Nothing was compared";
}

/** What the run came to as a whole: {words, sign, kind}. */
function outcomeOf(run) {
  const { passed = 0, known = 0 } = run.totals;
  if (!run.complete) {
    return { words: "Incomplete: the run did not come to its end", sign: "!", kind: "odd" };
  }
  if (run.pairs > 0 && run.status === 0) {
    return known > 0
      ? { words: "All passed but what is known", sign: "≈", kind: "odd" }
      : { words: "All passed", sign: "✓", kind: "good" };
  }
  return passed + known === run.pairs
    ? { words: "Not everything was verified", sign: "!", kind: "odd" }
    : { words: "Not all passed", sign: "✗", kind: "bad" };
}

function timeOf(run) {
  const start = new Date(run.start);
  if (Number.isNaN(start.valueOf())) {
    return null;
  }
  const text = new Intl.DateTimeFormat("en-GB", {
    dateStyle: "medium",
    timeStyle: "short",
    timeZone: "UTC",
  }).format(start);
  const seconds = (new Date(run.end) - start) / 1000;
  const duration = seconds >= 1 ? `, ${secondsText(seconds)}` : "";
  return el("time", { datetime: run.start }, `${text} UTC${duration}`);
}

function totalsBar(model, onVerdict) {
  const { run } = model;
  const counted = VERDICT_NAMES.filter((name) => run.totals[name] > 0);
  const bar = el("div.bar", { "aria-hidden": "true" });
  const legend = el("ul.legend", {});
  for (const name of counted) {
    const { sign, kind, words } = verdictOf(name);
    const count = run.totals[name];
    const part = el(`span.${kind}`, {});
    part.style.flexGrow = count;
    bar.append(part);
    legend.append(
      el(
        "li",
        {},
        el(
          "button.link",
          { type: "button", onclick: () => onVerdict(name) },
          el(`span.sign.${kind}`, { "aria-hidden": "true" }, sign),
          el("strong", {}, grouped(count)),
          ` ${words}`,
        ),
      ),
    );
  }
  return [bar, el("div.totals", {}, legend, runCommands(model), about(run))];
}

function listDetails(summary, texts) {
  const most = 500;
  const items = texts.slice(0, most).map((text) => el("li", {}, text));
  if (texts.length > most) {
    items.push(el("li", {}, `… and ${grouped(texts.length - most)} more`));
  }
  return el("details", {}, el("summary", {}, summary), el("ul", {}, items));
}

function missingShards(run) {
  const there = new Set(run.shards.indices);
  const all = Array.from({ length: run.shards.count }, (_, i) => i + 1);
  return all.filter((index) => !there.has(index));
}

/** What was not compared, and what else a reader must know; null if nothing. */
function accounting({ run, account }) {
  const lines = [];
  const missing = missingShards(run);
  if (missing.length > 0) {
    lines.push(
      el("p", {}, `Missing from this report: shard ${missing.join(", ")} of ${run.shards.count}.`),
    );
  }
  lines.push(...account.map((sentence) => el("p", {}, sentence)));
  if (run.unverified.length > 0) {
    const reports = run.unverified.map(decodeText).sort();
    lines.push(
      listDetails(
        `${countOf(reports.length, "report")} not verified: no selected format has a master`,
        reports,
      ),
    );
  }
  return lines.length === 0
    ? null
    : el(
        "section.accounting",
        { "aria-labelledby": "accounting" },
        el("h2", { id: "accounting" }, "Also to know"),
        lines,
      );
}

function about(run) {
  const command = run.commandLine.map((word) => shellWord(decodeText(word))).join(" ");
  const rows = [
    ["Command", el("code", {}, command)],
    ["Working folder", el("code", {}, decodeText(run.workingFolder))],
    ["Machine", run.host],
    ["Started", run.start],
    ["Ended", run.end || "did not end"],
    ["Reports", grouped(run.reports)],
    ["Program", `orvdiff ${run.program}`],
  ];
  return el(
    "details.about",
    {},
    el("summary", {}, "About this run"),
    el(
      "dl",
      {},
      rows.map(([term, text]) => [el("dt", {}, term), el("dd", {}, text)]),
    ),
  );
}

/** The top of the page: verdict, when, where and what, totals, and what was not compared. */
export function overview(model, onVerdict) {
  const { run } = model;
  const outcome = outcomeOf(run);
  const where = el(
    "p.where",
    {},
    timeOf(run),
    run.host ? [" on ", run.host] : null,
    ` · orvdiff ${run.program}`,
  );
  return [
    el(
      "header.top",
      {},
      el(
        "div.verdict",
        {},
        el(
          `span.stamp.${outcome.kind}`,
          {},
          el("span.sign", { "aria-hidden": "true" }, outcome.sign),
          outcome.words,
        ),
        el("h1", {}, headline(run)),
      ),
      where,
      totalsBar(model, onVerdict),
    ),
    accounting(model),
  ];
}
