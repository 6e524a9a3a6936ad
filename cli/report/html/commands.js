import { copyButton, copyLine, el } from "./dom.js";
import { decodeText, shellWord } from "./text.js";
import { isFailure } from "./verdicts.js";

// Commands to copy. They start in the run's working folder, as all names of a run do.

const MOST_GROUPS_TO_NAME = 20; // that one command names

function inFolder(model, words) {
  return `cd ${shellWord(decodeText(model.run.workingFolder))} && orvdiff ${words.map(shellWord).join(" ")}`;
}

/** The one record of the page; the shards' must be merged into it first. */
function recordOf(model) {
  return model.records.length > 1 ? "merged" : model.records[0];
}

export function acceptCommand(model, words) {
  return inFolder(model, ["accept", "--from", recordOf(model), ...words]);
}

/** Lines for what is done with a record; a sentence if the run was not recorded. */
function recordLines(model, make) {
  const { records } = model;
  if (records.length === 0) {
    return [
      el(
        "p.note",
        {},
        "To accept outputs or to review them on a terminal, record the run: add ",
        el("code", {}, "--record FOLDER"),
        " to orvdiff verify.",
      ),
    ];
  }
  const merge =
    records.length > 1
      ? [copyLine("Merge the shards first", inFolder(model, ["merge", ...records, "-o", "merged"]))]
      : [];
  return [...merge, ...make(recordOf(model))];
}

function section(lines) {
  return el(
    "section.commands",
    { "aria-labelledby": "commands" },
    el("h2", { id: "commands" }, "Commands"),
    lines,
  );
}

/** The commands for a pair. */
export function pairCommands(model, row, pair) {
  const [master, output, report] = [pair.master, pair.output, pair.report].map(decodeText);
  const lines = [];
  if (master !== "") {
    lines.push(copyLine("Show the difference", inFolder(model, ["diff", pair.format, master, output])));
  }
  lines.push(copyLine("Verify this report", inFolder(model, ["verify", "-f", pair.format, report])));
  if (isFailure(row.verdict)) {
    const accept = () => copyLine("Accept this report", acceptCommand(model, [report]));
    lines.push(
      ...recordLines(model, (record) => [
        row.verdict === "differs" ? accept() : null,
        copyLine("Review all on a terminal", inFolder(model, ["review", record])),
        copyLine("Verify what did not pass", inFolder(model, ["verify", "--failed", record])),
      ]),
    );
  }
  return section(lines);
}

/** A button for the command that accepts changes wherever nothing else has changed; null if too many. */
export function bundleCommand(model, { groups }) {
  if (model.records.length === 0 || groups.length > MOST_GROUPS_TO_NAME) {
    return null;
  }
  const options = groups.flatMap((group) => ["--group", group.id]);
  const command = acceptCommand(model, options);
  return copyButton("Copy as command", command, { class: "link", title: command });
}

/** The commands for the whole run; null if there is nothing left to do. */
export function runCommands(model) {
  if (model.run.pairs > 0 && model.rows.every((row) => !isFailure(row.verdict))) {
    return null;
  }
  return el(
    "details.about",
    {},
    el("summary", {}, "What to do next"),
    recordLines(model, (record) => [
      copyLine("Review on a terminal", inFolder(model, ["review", record])),
      copyLine("Verify what did not pass", inFolder(model, ["verify", "--failed", record])),
    ]),
  );
}
