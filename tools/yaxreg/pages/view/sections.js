// All of the page but the tree: what is to be told of the files as a whole.

const kFindingsAtFirst = 100;

class Sections {
  constructor(model, onGo) {
    this.model = model;
    this.onGo = onGo;
  }

  show() {
    const files = this.model.files;
    const sums = files.map((file) => (files.length > 1 ? nameText(file.file) + ': ' : '') + this.sumOf(file));
    putText(document.getElementById('summary'), sums.join(' | '));
    for (const file of files) this.showState(file);
    if (this.model.hasSecond) this.showChanges();
    this.showFindings();
    for (const file of files) this.showComponents(file);
    for (const file of files) this.showRoom(file);
    this.showPieces(files[0]);
    if (this.model.hasSecond) document.getElementById('map-title').textContent = 'Map of the first file';
  }

  sumOf(file) {
    return [counted(file.keyCount, 'key'), counted(file.valueCount, 'value'), counted(file.bytes, 'byte')].join(', ');
  }

  prefix(file) {
    return this.model.hasSecond ? nameText(file.file) + ': ' : '';
  }

  addState(kind, ...content) {
    document.getElementById('states').append(make('p', 'state ' + kind, ...content));
  }

  showState(file) {
    const prefix = this.prefix(file);
    if (file.sound) {
      this.addState('good', prefix + 'Sound');
    } else {
      const words = file.complete ? 'Damaged, but all keys and values can be read' :
        'Damaged: something may be missing or wrong';
      this.addState('bad', prefix + words);
    }
    if (file.pendingChange) {
      this.addState('warn', prefix + 'A program has died in a change, which is shown as done; the next opening completes it');
    }
    for (const [kind, room] of Object.entries(file.kinds)) {
      if (room.left < room.ever / 20) this.addState('warn', prefix + 'Nearly full: ' + counted(room.left, kind) + ' left');
    }
  }

  showChanges() {
    const changes = this.model.changes;
    this.addState(changes ? 'warn' : 'good', changes ? counted(changes, 'difference') : 'No difference');
  }

  // ---- findings

  // Equal ones once, with their number.
  mergedFindings(file) {
    const merged = new Map();
    for (const finding of file.findings) {
      const id = JSON.stringify([finding.severity, finding.path, finding.text]);
      if (merged.has(id)) ++merged.get(id).times;
      else merged.set(id, { finding: finding, times: 1 });
    }
    return Array.from(merged.values());
  }

  showFindings() {
    const target = document.getElementById('findings');
    for (const file of this.model.files) {
      const findings = this.mergedFindings(file);
      if (findings.length === 0) continue;
      document.getElementById('damage').hidden = false;
      document.getElementById('to-damage').hidden = false;
      if (this.model.hasSecond) target.append(make('h3', '', nameText(file.file)));
      const list = make('ul', 'findings');
      const add = (some) => list.append(...some.map((one) => this.findingItem(one)));
      add(findings.slice(0, kFindingsAtFirst));
      target.append(list);
      if (findings.length > kFindingsAtFirst) {
        const more = make('button', '', 'Show all ' + grouped(findings.length));
        more.type = 'button';
        more.addEventListener('click', () => {
          add(findings.slice(kFindingsAtFirst));
          more.remove();
        });
        target.append(more);
      }
    }
  }

  findingItem(one) {
    const finding = one.finding;
    const item = make('li', '', make('span', 'badge ' + finding.severity, finding.severity));
    if (finding.key !== undefined) {
      const go = make('button', 'link', '/' + nameText(finding.path));
      go.type = 'button';
      go.addEventListener('click', () => this.onGo(this.model.keyLines[finding.key]));
      item.append(go, ': ');
    }
    putText(item, nameText(finding.text) + (one.times > 1 ? ' (' + one.times + ' times)' : ''));
    return item;
  }

  // ---- components

  showComponents(file) {
    const target = document.getElementById('component-lists');
    const { system, components } = file.components;
    if (this.model.hasSecond) target.append(make('h3', '', nameText(file.file)));
    if (system) {
      const facts = make('dl', 'facts');
      const add = (name, value) => facts.append(make('dt', '', name), make('dd', '', value));
      add('isSingleBin', system.isSingleBin === null ? 'none' : String(system.isSingleBin));
      add('BinDirectory', system.binDirectory === null ? 'none' : nameText(system.binDirectory));
      target.append(facts);
    }
    if (components.length === 0) {
      target.append(make('p', 'hint', 'No components are registered.'));
      return;
    }
    target.append(make('ul', 'cards', ...components.map((component) => this.componentCard(component))));
  }

  componentCard(component) {
    const card = make('li', 'card', make('h3', '', component.name === null ? '(no name)' : nameText(component.name)),
      make('p', 'faint mono', nameText(component.id)));
    if (component.binaryPath !== null && component.type === 1) {
      card.append(make('p', 'mono', nameText(component.binaryPath)));
    } else if (component.type !== null && component.type !== 1) {
      const address = component.factoryFn ? ' at ' + hexNumber(BigInt(component.factoryFn)) : '';
      card.append(make('p', '', 'in the program' + address));
    }
    for (const problem of component.problems) card.append(make('p', 'problem', problem));
    return card;
  }

  // ---- room and map

  makeTable(caption, headings, rows) {
    const table = make('table');
    if (caption) table.append(make('caption', '', caption));
    const head = make('tr');
    headings.forEach((heading) => {
      const cell = make('th', '', heading);
      cell.scope = 'col';
      head.append(cell);
    });
    const body = make('tbody');
    for (const row of rows) {
      const first = make('th', '', row[0]);
      first.scope = 'row';
      body.append(make('tr', '', first, ...row.slice(1).map((cell) => make('td', '', cell))));
    }
    table.append(make('thead', '', head), body);
    const frame = make('div', 'scroll', table);
    frame.tabIndex = 0;
    frame.setAttribute('role', 'group');
    frame.setAttribute('aria-label', (caption || headings[0]) + ', can be scrolled');
    return frame;
  }

  meter(room) {
    const percent = room.ever === 0 ? 100 : Math.round(100 * (room.ever - room.left) / room.ever);
    const bar = make('i');
    bar.style.width = percent + '%';
    const frame = make('span', 'meter', bar);
    frame.setAttribute('aria-hidden', 'true');
    return make('span', '', frame, ' ' + percent + ' %');
  }

  showRoom(file) {
    const rows = Object.entries(file.kinds).map(([kind, room]) => [
      kind + 's', this.meter(room), grouped(room.left), grouped(room.used), grouped(room.leaked), grouped(room.free),
      grouped(room.stranded), room.tables + ' of ' + room.maxTables
    ]);
    const headings = ['Kind', 'Full', 'Left until 75', 'In use', 'Leaked', 'Free', 'Stranded', 'Tables'];
    document.getElementById('rooms').append(this.makeTable(this.model.hasSecond ? nameText(file.file) : '', headings, rows));
  }

  showPieces(file) {
    const details = document.getElementById('pieces');
    details.addEventListener('toggle', () => {
      const rows = file.pieces.map((piece) => [piece.name, grouped(piece.offset), grouped(piece.size)]);
      details.append(this.makeTable('', ['Part of the file', 'Offset', 'Bytes'], rows));
    }, { once: true });
  }
}
