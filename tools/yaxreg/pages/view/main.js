// Puts the page together.

const kSearchDelay = 120;  // ms behind the last letter

class Page {
  constructor() {
    this.model = new Model(JSON.parse(document.getElementById('data').textContent));
    this.search = document.getElementById('search');
    this.filter = document.getElementById('filter');
    this.status = document.getElementById('status');
    this.details = new Details(this.model, document.getElementById('details'), (at) => this.goTo(at));
    this.tree = new Tree(this.model, document.getElementById('tree'), document.getElementById('rows'),
      (at) => this.details.show(at));
    this.details.show(0);
    new Sections(this.model, (at) => this.goTo(at)).show();
    this.addFilters();
    this.listen();
  }

  addFilters() {
    const add = (value, text) => {
      const option = make('option', '', text);
      option.value = value;
      this.filter.append(option);
    };
    add('', 'Everything');
    if (this.model.hasSecond) add('change', 'Differences (' + grouped(this.model.changes) + ')');
    if (this.model.damaged > 0) add('damage', 'Damage (' + grouped(this.model.damaged) + ')');
    this.filter.parentElement.hidden = this.filter.options.length < 2;
  }

  listen() {
    let timer = 0;
    this.search.addEventListener('input', () => {
      clearTimeout(timer);
      timer = setTimeout(() => this.apply(), kSearchDelay);
    });
    this.search.addEventListener('keydown', (event) => {
      if (event.key === 'Escape') {
        this.search.value = '';
        this.apply();
      } else if (event.key === 'Enter' || event.key === 'ArrowDown') {
        clearTimeout(timer);
        this.apply();
        this.enterTree();
      } else {
        return;
      }
      event.preventDefault();
    });
    this.filter.addEventListener('change', () => this.apply());
    document.getElementById('expand').addEventListener('click', () => this.tree.setAll(true));
    document.getElementById('collapse').addEventListener('click', () => this.tree.setAll(false));
    document.addEventListener('keydown', (event) => this.onKey(event));
  }

  onKey(event) {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const isInField = event.target.closest('input, select, textarea') !== null;
    if (event.key === '/' && !isInField) {
      this.search.focus();
      this.search.select();
      event.preventDefault();
    } else if (event.key === 'Escape' && event.target.closest('#details')) {
      this.tree.element.focus();
    }
  }

  // Which lines are hits of both search and filter.
  hits() {
    const query = this.search.value;
    const kind = this.filter.value;
    if (!query && !kind) return null;
    const hits = query ? this.model.search(query) : new Uint8Array(this.model.lines.length).fill(1);
    if (kind) {
      this.model.lines.forEach((line, at) => {
        if (!line[kind]) hits[at] = 0;
      });
    }
    return hits;
  }

  // The hits, what leads to them, and what lies in keys that are hits of a search.
  included(hits) {
    const lines = this.model.lines;
    const included = new Uint8Array(lines.length);
    const takesAll = !this.filter.value;
    for (let at = lines.length - 1; at >= 0; --at) {
      if (hits[at]) included[at] = 1;
      if (included[at] && lines[at].parent >= 0) included[lines[at].parent] = 1;
    }
    for (let at = 0; takesAll && at < lines.length; ++at) {
      if (!hits[at] || !lines[at].isKey) continue;
      included.fill(1, at, lines[at].end);
      at = lines[at].end - 1;
    }
    return included;
  }

  apply() {
    const hits = this.hits();
    this.tree.setFilter(hits ? this.included(hits) : null, hits, this.search.value !== '');
    const count = hits ? hits.reduce((sum, hit) => sum + hit, 0) : 0;
    this.status.textContent = hits ? (count === 0 ? 'No hits' : counted(count, 'hit')) : '';
    if (hits && count > 0 && !hits[this.tree.chosen]) {
      this.tree.choose(hits.indexOf(1));
      this.tree.arrange();
    }
    this.tree.reveal();
  }

  enterTree() {
    if (this.tree.visible.length === 0) return;
    this.tree.element.focus();
    if (this.tree.hits && !this.tree.hits[this.tree.chosen]) this.tree.choose(this.tree.visible[0]);
    this.tree.reveal();
  }

  // From elsewhere on the page: the line must be in the tree.
  goTo(at) {
    if (this.tree.included && !this.tree.included[at]) {
      this.search.value = '';
      this.filter.value = '';
      this.apply();
    }
    this.tree.goTo(at);
    this.tree.element.focus();
  }
}

new Page();
