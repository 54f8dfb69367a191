// What the page shows, as one list of lines: each key before its values, and those before the keys below it. `end`
// is the line behind all that lies in a key, so nothing here calls itself, however deep the keys lie.

const kFields = ['missing', 'owner', 'rights', 'watch', 'default'];

class Model {
  constructor(data) {
    this.files = data.files;
    this.hasSecond = data.files.length > 1;
    this.lines = [];
    this.keyLines = [];  // the line of each key of the document
    this.addKeys(data.keys);
    this.closeKeys();
    this.addFindings();
    this.sumUp();
  }

  addKeys(keys) {
    for (const key of keys) {
      const line = {
        isKey: true, depth: key.depth, name: key.depth === 0 ? '/' : nameText(key.name), key: key,
        change: key.change === 'changed' ? this.ownChange(key) : key.change || ''
      };
      this.keyLines.push(this.lines.length);
      this.lines.push(line);
      this.addValues(key, line);
    }
  }

  ownChange(key) {
    return kFields.some((field) => key[field] !== key.second[field]) ? 'changed' : '';
  }

  addValues(key, line) {
    const second = key.change === 'changed' ? key.second.values : key.values;
    const names = new Map();
    const group = (name) => {
      const id = JSON.stringify(name);
      if (!names.has(id)) names.set(id, { first: [], second: [] });
      return names.get(id);
    };
    for (const value of key.values) group(value.name).first.push(value);
    if (key.change === 'changed') {
      for (const value of second) group(value.name).second.push(value);
    }
    const groups = Array.from(names.values());
    line.valueCount = 0;
    for (const one of groups) {
      for (let i = 0; i < Math.max(one.first.length, one.second.length); ++i) {
        this.lines.push(this.valueLine(key, one.first[i], one.second[i], i > 0));
        ++line.valueCount;
      }
    }
  }

  valueLine(key, first, second, isHidden) {
    let change = key.change || '';
    if (change === 'changed') {
      if (!second) change = 'removed';
      else if (!first) change = 'added';
      else if (JSON.stringify(first) === JSON.stringify(second)) change = '';
    }
    const value = first || second;
    return {
      isKey: false, depth: key.depth + 1, name: nameText(value.name), value: value,
      other: change === 'changed' ? second : null, isHidden: isHidden, change: change
    };
  }

  // Finds the key in which each line lies, and where each key ends.
  closeKeys() {
    const open = [];
    this.lines.forEach((line, at) => {
      while (open.length > 0 && this.lines[open[open.length - 1]].depth >= line.depth) {
        this.lines[open.pop()].end = at;
      }
      line.parent = open.length > 0 ? open[open.length - 1] : -1;
      line.end = at + 1;
      line.findings = [];
      line.changesBelow = 0;
      line.damageBelow = 0;
      line.keysBelow = 0;
      if (line.isKey) open.push(at);
    });
    for (const at of open) this.lines[at].end = this.lines.length;
  }

  addFindings() {
    for (const file of this.files) {
      for (const finding of file.findings) {
        if (finding.key !== undefined) this.lines[this.keyLines[finding.key]].findings.push(finding);
      }
    }
    for (const line of this.lines) {
      const severities = line.findings.map((finding) => finding.severity);
      line.damage = severities.includes('loss') ? 'loss' : severities.includes('damage') ? 'damage' : '';
      if (!line.damage && line.isKey && line.key.missing) line.damage = 'damage';
    }
  }

  sumUp() {
    this.changes = 0;
    this.damaged = 0;
    for (let at = this.lines.length - 1; at >= 0; --at) {
      const line = this.lines[at];
      this.changes += line.change ? 1 : 0;
      this.damaged += line.damage ? 1 : 0;
      if (line.parent < 0) continue;
      const parent = this.lines[line.parent];
      parent.changesBelow += line.changesBelow + (line.change ? 1 : 0);
      parent.damageBelow += line.damageBelow + (line.damage ? 1 : 0);
      parent.keysBelow += line.keysBelow + (line.isKey ? 1 : 0);
    }
  }

  // The names of a line's keys from the root, in an array.
  namesTo(at) {
    const names = [];
    for (let i = at; i > 0; i = this.lines[i].parent) names.push(this.lines[i].name);
    return names.reverse();
  }

  // "network/eth0:mtu"; what is very long has "..." in its middle.
  pathOf(at) {
    const line = this.lines[at];
    const names = this.namesTo(line.isKey ? at : line.parent);
    let path = names.length > 120 ? names.slice(0, 60).join('/') + '/.../' + names.slice(-60).join('/') : names.join('/');
    if (path.length > 2000) path = path.slice(0, 1000) + '...' + path.slice(-1000);
    return line.isKey ? path : path + ':' + line.name;
  }

  // All that a search looks at, in small letters.
  textOf(line) {
    if (line.text === undefined) {
      const parts = [line.name];
      if (line.isKey) {
        if (line.key.default != null) parts.push(defaultText(line.key.default));
        if (line.key.second && line.key.second.default != null) parts.push(defaultText(line.key.second.default));
      } else {
        for (const value of [line.value, line.other]) {
          if (!value) continue;
          parts.push(valueText(value), value.hex || '');
          if (value.number !== undefined) parts.push(hexNumber(BigInt(value.number)));
        }
      }
      line.text = parts.join('\n').toLowerCase();
    }
    return line.text;
  }

  // True when the line's name begins with the last of the names, and the keys above it are the others.
  isAtPath(line, names) {
    let one = line;
    for (let i = names.length - 1; i >= 0; --i) {
      const name = one.name.toLowerCase();
      const isLast = i === names.length - 1;
      if (isLast ? !name.startsWith(names[i]) : i === 0 ? !name.endsWith(names[i]) : name !== names[i]) return false;
      if (i > 0 && one.parent <= 0) return i === 1 && names[0] === '' && one.parent === 0;
      one = this.lines[one.parent];
    }
    return true;
  }

  // Which lines are hits: 1 for each.
  search(query) {
    const hits = new Uint8Array(this.lines.length);
    const words = query.toLowerCase();
    const names = words.split(/[/:]/);
    const isPath = names.length > 1;
    const wantsValue = words.lastIndexOf(':') > words.lastIndexOf('/');
    this.lines.forEach((line, at) => {
      const isHere = this.textOf(line).includes(words) ||
        (isPath && !(wantsValue && line.isKey) && at > 0 && this.isAtPath(line, names));
      if (isHere) hits[at] = 1;
    });
    return hits;
  }
}
