// The lines as a tree, of which only those in sight are elements of the page. The focus stays on the tree itself;
// aria-activedescendant tells the chosen line, which is always there.

const kMargin = 12;       // lines above and below those in sight that are there, too
const kIndents = 14;      // levels that are indented, of a narrow tree
const kFewIndents = 6;    // fewer; deeper ones tell their number
const kNarrow = 600;      // px
const kTypeTime = 700;    // ms in which letters make one word

class Tree {
  constructor(model, element, rows, onChoose) {
    this.model = model;
    this.element = element;
    this.rows = rows;
    this.onChoose = onChoose;
    this.open = new Uint8Array(model.lines.length);
    this.openBefore = null;    // what was open before a filter
    this.included = null;      // by line; null: all
    this.hits = null;
    this.areMarked = false;
    this.chosen = 0;
    this.live = new Map();
    this.typed = '';
    this.typedAt = 0;
    this.rowHeight = parseFloat(getComputedStyle(element).getPropertyValue('--row'));
    this.openFirst(60);
    this.arrange();
    element.addEventListener('scroll', () => this.schedule(), { passive: true });
    element.addEventListener('keydown', (event) => this.onKey(event));
    rows.addEventListener('click', (event) => this.onClick(event));
    rows.addEventListener('dblclick', (event) => this.onDoubleClick(event));
    new ResizeObserver(() => this.schedule()).observe(element);
  }

  // Opens as many levels as make so many lines at most, and the root.
  openFirst(most) {
    const counts = [];
    for (const line of this.model.lines) counts[line.depth] = (counts[line.depth] || 0) + 1;
    let levels = 1;
    for (let sum = counts[0] + (counts[1] || 0); levels < counts.length && (sum += counts[levels + 1] || 0) <= most;) {
      ++levels;
    }
    this.model.lines.forEach((line, at) => {
      this.open[at] = line.isKey && line.depth < levels ? 1 : 0;
    });
  }

  // Shows only what is in `included`; null: all. The keys on the way to hits are open, and the hits marked if wanted.
  setFilter(included, hits, areMarked) {
    if (included && !this.openBefore) this.openBefore = this.open;
    this.included = included;
    this.hits = hits;
    this.areMarked = areMarked;
    if (included) {
      this.open = new Uint8Array(this.model.lines.length);
      for (let at = this.model.lines.length - 1; at > 0; --at) {
        const parent = this.model.lines[at].parent;
        if (hits[at] || this.open[at] === 1) this.open[parent] = 1;
      }
    } else if (this.openBefore) {
      this.open = this.openBefore;
      this.openBefore = null;
    }
    this.openTo(this.chosen);
    this.arrange();
  }

  setAll(isOpen) {
    this.open.fill(isOpen ? 1 : 0);
    this.open[0] = 1;
    this.arrange();
    if (this.place[this.chosen] < 0) this.choose(this.nearest(this.chosen));
    this.reveal();
  }

  openTo(at) {
    for (let i = this.model.lines[at].parent; i >= 0; i = this.model.lines[i].parent) this.open[i] = 1;
  }

  // The line itself, or the first key above it that is there.
  nearest(at) {
    let i = at;
    while (i > 0 && this.place[i] < 0) i = this.model.lines[i].parent;
    return this.place[i] < 0 ? this.visible[0] : i;
  }

  // Lists what can be seen, and counts neighbours.
  arrange() {
    const lines = this.model.lines;
    this.indents = this.element.clientWidth < kNarrow ? kFewIndents : kIndents;
    this.visible = [];
    this.place = new Int32Array(lines.length).fill(-1);
    this.position = new Int32Array(lines.length);
    this.children = new Int32Array(lines.length + 1);
    for (let at = 0; at < lines.length;) {
      if (this.included && !this.included[at]) {
        at = lines[at].end;
        continue;
      }
      this.place[at] = this.visible.length;
      this.position[at] = ++this.children[lines[at].parent + 1];
      this.visible.push(at);
      at = lines[at].isKey && !this.open[at] ? lines[at].end : at + 1;
    }
    this.rows.style.height = this.visible.length * this.rowHeight + 'px';
    for (const row of this.live.values()) row.remove();
    this.live.clear();
    this.render();
  }

  schedule() {
    if (this.isScheduled) return;
    this.isScheduled = true;
    requestAnimationFrame(() => {
      this.isScheduled = false;
      this.render();
    });
  }

  // Adds the lines that came into sight and takes out those that left.
  render() {
    const first = Math.max(0, Math.floor(this.element.scrollTop / this.rowHeight) - kMargin);
    const height = this.element.clientHeight || 600;
    const last = Math.min(this.visible.length, first + Math.ceil(height / this.rowHeight) + 2 * kMargin);
    for (const [at, row] of this.live) {
      const place = this.place[at];
      if ((place < first || place >= last) && at !== this.chosen) {
        row.remove();
        this.live.delete(at);
      }
    }
    const fresh = document.createDocumentFragment();
    for (let place = first; place < last; ++place) this.ensureRow(this.visible[place], fresh);
    if (this.place[this.chosen] >= 0) this.ensureRow(this.chosen, fresh);
    this.rows.append(fresh);
    const chosen = this.live.get(this.chosen);
    if (chosen) this.element.setAttribute('aria-activedescendant', chosen.id);
    else this.element.removeAttribute('aria-activedescendant');
  }

  ensureRow(at, target) {
    if (this.live.has(at)) return;
    const row = this.makeRow(at);
    this.live.set(at, row);
    target.append(row);
  }

  hasChildren(at) {
    const line = this.model.lines[at];
    if (line.end === at + 1) return false;
    return !this.included || this.hasIncluded(at);
  }

  hasIncluded(at) {
    for (let i = at + 1; i < this.model.lines[at].end; ++i) {
      if (this.included[i]) return true;
    }
    return false;
  }

  makeRow(at) {
    const line = this.model.lines[at];
    const row = make('div', 'row ' + (line.isKey ? 'key' : 'value'));
    row.id = 'line' + at;
    row.dataset.at = at;
    row.setAttribute('role', 'treeitem');
    row.setAttribute('aria-level', line.depth + 1);
    row.setAttribute('aria-setsize', this.siblings(at));
    row.setAttribute('aria-posinset', this.position[at]);
    row.setAttribute('aria-selected', at === this.chosen);
    if (line.isKey && this.hasChildren(at)) row.setAttribute('aria-expanded', this.open[at] === 1);
    if (line.change) row.classList.add(line.change);
    if (this.areMarked && this.hits[at]) row.classList.add('hit');
    row.style.transform = 'translateY(' + this.place[at] * this.rowHeight + 'px)';
    row.style.paddingLeft = 'calc(4px + ' + Math.min(line.depth, this.indents) + ' * var(--step))';
    const twisty = make('span', 'twisty');
    twisty.setAttribute('aria-hidden', 'true');
    row.append(twisty);
    if (line.depth > this.indents) row.append(make('span', 'level', 'level ' + line.depth));
    this.fillRow(row, line);
    return row;
  }

  // The neighbours that can be seen, itself included. Those of a key that is open are all known.
  siblings(at) {
    return this.children[this.model.lines[at].parent + 1];
  }

  fillRow(row, line) {
    const name = line.name.length > 300 ? line.name.slice(0, 300) + '...' : line.name;
    row.append(name === '' ? make('span', 'name faint', '(no name)') : make('span', 'name', name));
    if (line.isKey) this.fillKey(row, line);
    else this.fillValue(row, line);
    if (line.change) row.append(make('span', 'badge ' + line.change, line.change));
    if (line.damage) row.append(make('span', 'badge ' + line.damage, line.damage));
    if (line.isKey && !line.change && line.changesBelow) {
      row.append(make('span', 'badge changed', grouped(line.changesBelow) + ' differ'));
    }
    if (line.isKey && !line.damage && line.damageBelow) {
      row.append(make('span', 'badge damage', grouped(line.damageBelow) + ' damaged'));
    }
  }

  fillKey(row, line) {
    const parts = [];
    if (line.key.missing) parts.push('no key record');
    if (line.key.default != null) parts.push('default ' + line.key.default);
    row.append(make('span', 'data', parts.join(', ')));
  }

  fillValue(row, line) {
    const data = make('span', 'data');
    const short = (value) => valueText(value).slice(0, 300);
    if (line.other) {
      data.append(make('span', 'was', short(line.value)), ' ', make('span', '', short(line.other)));
    } else {
      putText(data, short(line.value));
    }
    row.append(data);
    if (line.isHidden) row.append(make('span', 'badge', 'hidden'));
  }

  // ---- choosing

  choose(at, isTold = true) {
    const before = this.live.get(this.chosen);
    if (before) before.setAttribute('aria-selected', 'false');
    this.chosen = at;
    const now = this.live.get(at);
    if (now) now.setAttribute('aria-selected', 'true');
    if (isTold) this.onChoose(at);
  }

  // Chooses a line wherever it is, and brings it into sight.
  goTo(at) {
    this.openTo(at);
    this.choose(at);
    this.arrange();
    this.reveal();
  }

  move(place) {
    if (this.visible.length === 0) return;
    this.choose(this.visible[Math.max(0, Math.min(this.visible.length - 1, place))]);
    this.reveal();
  }

  reveal() {
    if (this.place[this.chosen] >= 0) {
      const top = this.place[this.chosen] * this.rowHeight;
      const height = this.element.clientHeight;
      if (top < this.element.scrollTop) this.element.scrollTop = top;
      else if (top + this.rowHeight > this.element.scrollTop + height) this.element.scrollTop = top + this.rowHeight - height;
    }
    this.render();
  }

  toggle(at) {
    if (!this.model.lines[at].isKey || !this.hasChildren(at)) return;
    this.open[at] = this.open[at] ? 0 : 1;
    this.arrange();
    if (this.place[this.chosen] < 0) this.choose(at);
    this.reveal();
  }

  // ---- events

  lineAt(event) {
    const row = event.target.closest('.row');
    return row ? Number(row.dataset.at) : -1;
  }

  onClick(event) {
    const at = this.lineAt(event);
    if (at < 0) return;
    this.choose(at);
    this.render();
    if (event.target.closest('.twisty')) this.toggle(at);
  }

  onDoubleClick(event) {
    const at = this.lineAt(event);
    if (at >= 0 && !event.target.closest('.twisty')) this.toggle(at);
  }

  onKey(event) {
    if (event.ctrlKey || event.metaKey || event.altKey || this.visible.length === 0) return;
    const place = Math.max(0, this.place[this.chosen]);
    const page = Math.max(1, Math.floor(this.element.clientHeight / this.rowHeight) - 1);
    const actions = {
      ArrowDown: () => this.move(place + 1),
      ArrowUp: () => this.move(place - 1),
      PageDown: () => this.move(place + page),
      PageUp: () => this.move(place - page),
      Home: () => this.move(0),
      End: () => this.move(this.visible.length - 1),
      ArrowRight: () => this.goIn(place),
      ArrowLeft: () => this.goOut(),
      Enter: () => document.querySelector('#details h3').focus(),
      ' ': () => this.toggle(this.chosen),
      '*': () => this.openNeighbours()
    };
    const action = actions[event.key];
    if (action) action();
    else if (event.key.length !== 1 || event.key === '/' || !this.goToName(event.key)) return;
    event.preventDefault();
  }

  goIn(place) {
    const at = this.chosen;
    if (!this.model.lines[at].isKey || !this.hasChildren(at)) return;
    if (this.open[at]) this.move(place + 1);
    else this.toggle(at);
  }

  goOut() {
    const line = this.model.lines[this.chosen];
    if (line.isKey && this.open[this.chosen] && this.hasChildren(this.chosen)) this.toggle(this.chosen);
    else if (line.parent >= 0) this.move(this.place[line.parent]);
  }

  openNeighbours() {
    const parent = this.model.lines[this.chosen].parent;
    if (parent < 0) return;
    for (let at = parent + 1; at < this.model.lines[parent].end; at = this.model.lines[at].end) {
      if (this.model.lines[at].isKey) this.open[at] = 1;
    }
    this.arrange();
    this.reveal();
  }

  // The next line whose name begins with what was typed; the same letter again goes on to the one behind it.
  goToName(letter) {
    const now = performance.now();
    this.typed = now - this.typedAt < kTypeTime ? this.typed + letter.toLowerCase() : letter.toLowerCase();
    this.typedAt = now;
    const isOne = this.typed === letter.toLowerCase().repeat(this.typed.length);
    const wanted = isOne ? letter.toLowerCase() : this.typed;
    const begin = this.place[this.chosen] + (isOne ? 1 : 0);
    for (let i = 0; i < this.visible.length; ++i) {
      const at = this.visible[(begin + i) % this.visible.length];
      if (!this.model.lines[at].name.toLowerCase().startsWith(wanted)) continue;
      this.move(this.place[at]);
      break;
    }
    return true;
  }
}
