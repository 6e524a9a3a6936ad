import { loadOverview } from "./data.js";
import { decisionBar } from "./decide.js";
import { Decisions } from "./decisions.js";
import { el } from "./dom.js";
import { groupsSection } from "./groups.js";
import { tellReasons } from "./hunks.js";
import { watchKeys } from "./keys.js";
import { overview } from "./overview.js";
import { pairPage } from "./pair.js";
import { addressOf, readAddress, withField } from "./query.js";
import { firstQuery, PairTable } from "./table.js";
import { FAILURES } from "./verdicts.js";

/** The page: all pairs, or one of them, as the address says. */
class Report {
  constructor(model) {
    this.model = model;
    tellReasons(model.run.config?.patterns ?? []);
    const decisions = new Decisions(model);
    this.actions = {
      decisions,
      setState: (change) => this.setState(change),
      pairAddress: (row) => addressOf({ ...readAddress(), pair: row.id }),
      showGroup: (group) => this.filter("group", group.id),
      showUngrouped: () => this.search(`${FAILURES} group:none`),
    };
    this.table = new PairTable(model, decisions, this.actions.setState);
    this.home = el(
      "main",
      {},
      overview(model, (verdict) => this.filter("verdict", verdict)),
      groupsSection(model, this.actions),
      this.table.element(),
    );
    this.page = el("main.page", { hidden: true });
    this.keys = watchKeys(
      () => !this.page.hidden,
      () => this.focusFilter(),
    );
    const bar = decisionBar(decisions, model);
    document.getElementById("app").replaceChildren(this.home, this.page, bar, el("footer", {}, this.keys));
    // The table comes after the first frame: nobody reads it before the verdict.
    this.isPainted = new Promise((resolve) => requestAnimationFrame(() => setTimeout(resolve)));
    addEventListener("hashchange", () => this.show());
  }

  /** Changes the address, and with it what is shown; returns when it is. Typing makes no history. */
  setState(change, isNewEntry = "pair" in change) {
    const address = addressOf({ ...readAddress(), ...change });
    history[isNewEntry ? "pushState" : "replaceState"](null, "", address);
    return this.show();
  }

  filter(field, value) {
    return this.search(withField("", field, [value]));
  }

  /** Shows the table with a query, from wherever the reader is. */
  async search(q) {
    await this.setState({ pair: undefined, view: undefined, q }, true);
    document.getElementById("pairs").scrollIntoView();
  }

  async focusFilter() {
    if (!this.page.hidden) {
      await this.setState({ pair: undefined, view: undefined });
    }
    this.table.input.focus();
    this.table.input.select();
  }

  showTable(state) {
    const query = state.q ?? firstQuery(this.model.rows);
    const order = state.sort ?? "run";
    if (this.table.query !== query || this.table.order !== order) {
      this.table.show(query, order);
    }
  }

  async show() {
    await this.isPainted;
    const state = readAddress();
    this.showTable(state);
    const row = this.model.byId.get(state.pair);
    if (state.pair === undefined) {
      this.showHome();
      return;
    }
    const content = await this.pairContent(row, state);
    if (readAddress().pair === state.pair) {
      this.showPage(content, state.pair);
    }
  }

  async pairContent(row, state) {
    if (!row) {
      return [el("p.notice", {}, "This report holds no pair ", state.pair, ".")];
    }
    try {
      return await pairPage(this.model, this.table, row, state.view, this.actions);
    } catch (error) {
      return [
        el("p.notice", {}, `This pair cannot be shown: ${error.message}. The file may be cut short.`),
      ];
    }
  }

  showHome() {
    const wasAt = this.shownPair;
    this.page.hidden = true;
    this.home.hidden = false;
    this.shownPair = undefined;
    if (wasAt !== undefined) {
      scrollTo(0, this.scrolledTo ?? 0);
      [...this.home.querySelectorAll("table.list a")]
        .find((link) => link.hash.includes(`pair=${wasAt}`))
        ?.focus({ preventScroll: true });
    }
  }

  showPage(content, pair) {
    if (this.page.hidden) {
      this.scrolledTo = scrollY;
    }
    this.page.replaceChildren(...content.filter(Boolean));
    this.home.hidden = true;
    this.page.hidden = false;
    if (this.shownPair !== pair) {
      scrollTo(0, 0);
    }
    this.shownPair = pair;
  }
}

loadOverview()
  .then((model) => new Report(model).show())
  .catch((error) => {
    document
      .getElementById("app")
      .replaceChildren(
        el("p.notice", {}, `This report cannot be shown: ${error.message}. It may be cut short.`),
      );
  });
