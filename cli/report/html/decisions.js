import { loadPair } from "./data.js";

// What the reader has decided: of groups, of single pairs, and which pairs were viewed. The browser
// keeps it where it allows that; a saved file hands it to `orvdiff accept --list`.

const MOST_GROUPS_OF_PAIR = 1000; // of a pair; further changes are not told apart, so none speaks for it
const UNDECIDED = "none";

/** Whether an output may become the master as far as its verdict tells. */
export function canAccept(row) {
  return row.verdict === "differs";
}

function readKept(key) {
  try {
    return JSON.parse(localStorage.getItem(key)) ?? {};
  } catch {
    return {};
  }
}

/** The line of a decisions file; null for a pair to accept whose contents the record does not tell. */
function lineOf(row, pair) {
  const line = {
    fix: row.fix,
    report: pair.report,
    format: pair.format,
    path: pair.master,
    output: pair.output,
    masterHash: pair.masterFile.hash,
    outputHash: pair.outputFile.hash,
    group: row.groups.length === 1 ? row.groups[0].id : undefined,
  };
  const isKnown = line.masterHash && line.outputHash;
  return row.fix === "accept" && !isKnown ? null : JSON.stringify(line);
}

/**
 * Decisions on pairs: "accept", "fault" (a real one) or "none", in `fix` of each row. That of a
 * single pair goes before those of its groups. A group that is accepted speaks for the pairs whose
 * every change is accepted; one that is a fault, for every pair that shows it.
 */
export class Decisions {
  constructor(model) {
    this.model = model;
    /** Only pairs of a record can be accepted later: it holds what they were. */
    this.isPossible = model.records.length > 0;
    this.isKept = true;
    this.listeners = [];
    const { run } = model;
    this.key = JSON.stringify(["orvdiff", run.host, run.workingFolder, run.start, model.records]);
    const kept = readKept(this.key);
    this.ofGroup = new Map(Object.entries(kept.groups ?? {}));
    this.ofPair = new Map(Object.entries(kept.pairs ?? {}));
    this.viewed = new Set(kept.viewed ?? []);
    this.apply();
  }

  /** Calls `listener` after each change, until `element`, if given, has left the page. */
  onChange(listener, element) {
    this.listeners.push({ listener, element });
  }

  fixOfGroups(row) {
    const fixes = row.groups.map((group) => this.ofGroup.get(group.id));
    if (fixes.includes("fault")) {
      return "fault";
    }
    const isTold = fixes.length > 0 && fixes.length < MOST_GROUPS_OF_PAIR;
    return isTold && fixes.every((fix) => fix === "accept") && canAccept(row) ? "accept" : UNDECIDED;
  }

  apply() {
    for (const row of this.model.rows) {
      row.fix = this.ofPair.get(row.id) ?? this.fixOfGroups(row);
      row.isViewed = this.viewed.has(row.id);
    }
  }

  changed() {
    this.apply();
    const kept = {
      groups: Object.fromEntries(this.ofGroup),
      pairs: Object.fromEntries(this.ofPair),
      viewed: [...this.viewed],
    };
    try {
      localStorage.setItem(this.key, JSON.stringify(kept));
      this.isKept = true;
    } catch {
      this.isKept = false;
    }
    this.listeners = this.listeners.filter(({ element }) => element?.isConnected ?? true);
    this.listeners.forEach(({ listener }) => listener());
  }

  /** Decides on a pair; the decision that it has already is taken back. */
  togglePair(row, fix) {
    const wanted = row.fix === fix ? UNDECIDED : fix;
    if (wanted === this.fixOfGroups(row)) {
      this.ofPair.delete(row.id);
    } else {
      this.ofPair.set(row.id, wanted);
    }
    this.changed();
  }

  fixOfBundle({ groups }) {
    const fixes = new Set(groups.map((group) => this.ofGroup.get(group.id)));
    return fixes.size === 1 ? ([...fixes][0] ?? UNDECIDED) : UNDECIDED;
  }

  /** Decides on changes that the same pairs show; the decision they have already is taken back. */
  toggleBundle(bundle, fix) {
    const isTakenBack = this.fixOfBundle(bundle) === fix;
    for (const { id } of bundle.groups) {
      isTakenBack ? this.ofGroup.delete(id) : this.ofGroup.set(id, fix);
    }
    this.changed();
  }

  toggleViewed(row) {
    this.viewed.has(row.id) ? this.viewed.delete(row.id) : this.viewed.add(row.id);
    this.changed();
  }

  /** Takes all decisions back; what was viewed stays so. */
  forget() {
    this.ofGroup.clear();
    this.ofPair.clear();
    this.changed();
  }

  decided(fix) {
    return this.model.rows.filter((row) => row.fix === fix);
  }

  /** The decisions file: {text, left}; `left` pairs could not be put into it. */
  async file() {
    const lines = [];
    let left = 0;
    for (const row of this.model.rows.filter((each) => each.fix !== UNDECIDED)) {
      const line = lineOf(row, await loadPair(this.model.blocks, row.number));
      line === null ? ++left : lines.push(`${line}\n`);
    }
    return { text: lines.join(""), left };
  }
}
