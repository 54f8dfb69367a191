// What is to be told of the chosen key or value.

const kDumpWidth = 580;  // px for sixteen bytes a line

class Details {
  constructor(model, element, onGo) {
    this.model = model;
    this.element = element;
    this.onGo = onGo;
    this.names = model.files.map((file) => nameText(file.file));
    if (this.names.length > 1 && this.names[0] === this.names[1]) this.names = ['the first file', 'the second file'];
  }

  show(at) {
    const line = this.model.lines[at];
    const title = make('h3', '', line.name === '' ? '(no name)' : line.name);
    title.tabIndex = -1;
    this.element.replaceChildren(title, make('p', 'path', (line.isKey ? 'Key /' : 'Value /') + this.model.pathOf(at)));
    this.element.scrollTop = 0;
    if (line.change === 'added' || line.change === 'removed') {
      const where = this.names[line.change === 'added' ? 1 : 0];
      this.element.append(make('p', '', make('span', 'badge ' + line.change, line.change), ' only in ' + where));
    }
    if (line.isKey) this.showKey(at, line);
    else this.showValue(line);
  }

  // A row of what both files say, or the one that there is.
  addFact(list, name, first, second = first) {
    const data = make('dd');
    if (first === second) putText(data, first);
    else data.append(make('del', '', first), ' ', make('ins', '', second));
    list.append(make('dt', '', name), data);
  }

  showKey(at, line) {
    const key = line.key;
    const second = key.change === 'changed' ? key.second : key;
    if (line.change === 'changed') this.element.append(this.legend());
    for (const finding of line.findings) {
      this.element.append(make('p', 'finding ' + finding.severity, finding.severity + ': ' + nameText(finding.text)));
    }
    if (key.missing) this.element.append(make('p', 'finding', 'A name without a key: there is no record that can be read.'));
    const facts = make('dl', 'facts');
    const text = (one, name, show) => one.missing ? 'no key' : show(one[name]);
    const fact = (title, name, show) => this.addFact(facts, title, text(key, name, show), text(second, name, show));
    if (!key.missing || !second.missing) {
      fact('Owner', 'owner', ownerText);
      fact('Rights', 'rights', rightsText);
      fact('Default', 'default', defaultText);
      fact('Watched', 'watch', watchText);
    }
    this.addFact(facts, 'Below', counted(line.keysBelow, 'key') + ', ' + this.depthText(line));
    this.element.append(facts);
    this.listValues(at, line);
  }

  depthText(line) {
    return 'level ' + grouped(line.depth);
  }

  legend() {
    return make('p', 'hint', make('del', '', this.names[0]), ' ', make('ins', '', this.names[1]));
  }

  listValues(at, line) {
    if (line.valueCount === 0) return;
    const list = make('ul', 'plain values');
    for (let i = 1; i <= line.valueCount; ++i) {
      const one = this.model.lines[at + i];
      const go = make('button', 'link', one.name === '' ? '(no name)' : one.name);
      go.type = 'button';
      go.addEventListener('click', () => this.onGo(at + i));
      const row = make('li', '', go, ' ', make('span', 'mono', valueText(one.value).slice(0, 200)));
      if (one.isHidden) row.append(' ', make('span', 'badge', 'hidden'));
      if (one.change) row.append(' ', make('span', 'badge ' + one.change, one.change));
      list.append(row);
    }
    this.element.append(make('h4', '', counted(line.valueCount, 'value')), list);
  }

  showValue(line) {
    if (line.isHidden) {
      this.element.append(make('p', 'hint', 'Hidden: a newer value of the same name is the one that programs see.'));
    }
    if (!line.other) {
      this.addForms(line.value);
      return;
    }
    this.element.append(make('h4', '', 'In ' + this.names[0]));
    this.addForms(line.value);
    this.element.append(make('h4', '', 'In ' + this.names[1]));
    this.addForms(line.other);
  }

  addForms(value) {
    const facts = make('dl', 'facts');
    this.addFact(facts, 'Type', typeText(value.type));
    if (value.set === false) this.addFact(facts, 'Set', 'no');
    const bytes = value.type === 0 ? this.addNumber(facts, value) : bytesOf(value);
    if (value.type !== 0) this.addFact(facts, 'Size', counted(value.size === undefined ? bytes.length : value.size, 'byte'));
    if (value.type !== 0) this.addData(facts, value, bytes);
    this.element.append(facts);
    if (value.type === 0 || bytes.length === 0) return;
    const text = value.text !== undefined ? value.text : textOf(bytes);
    if (text !== null) this.element.append(make('h4', '', 'Text'), putText(make('pre', 'text'), text, '\n'));
    const dump = make('pre', 'dump');
    dump.textContent = hexDump(bytes, this.element.clientWidth < kDumpWidth ? 8 : 16);
    dump.tabIndex = 0;
    this.element.append(make('h4', '', 'Bytes'), dump);
  }

  addNumber(facts, value) {
    const size = value.size === undefined ? 8 : value.size;
    if (value.number !== undefined) {
      const number = BigInt(value.number);
      this.addFact(facts, 'Decimal', String(number));
      this.addFact(facts, 'Hexadecimal', hexNumber(number));
      const signed = BigInt.asIntN(number > 0xffffffffn ? 64 : 32, number);
      if (signed < 0n) this.addFact(facts, 'With a sign', String(signed));
    }
    this.addFact(facts, 'Size', counted(size, 'byte'));
    return new Uint8Array(0);
  }

  // What short data is as a number, the lowest byte first.
  addData(facts, value, bytes) {
    if (value.text !== undefined) this.addFact(facts, 'Ends with', 'a zero byte');
    if (![1, 2, 4, 8].includes(bytes.length) || value.text !== undefined) return;
    let number = 0n;
    for (let i = bytes.length - 1; i >= 0; --i) number = number << 8n | BigInt(bytes[i]);
    const signed = BigInt.asIntN(8 * bytes.length, number);
    this.addFact(facts, 'As a number', number + ' (' + hexNumber(number) + (signed < 0n ? ', ' + signed : '') + ')');
  }
}
