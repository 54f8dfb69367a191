'use strict';

// Texts of a registry may hold anything: what cannot be seen, or turns around what stands beside it, is shown
// as an escape. Everything gets into the page as text, never as markup.

const UNSEEN = new RegExp(
  '[\\u0000-\\u001f\\u007f-\\u00a0\\u00ad\\u034f\\u061c\\u115f\\u1160\\u17b4\\u17b5\\u180b-\\u180f' +
  '\\u200b-\\u200f\\u2028-\\u202f\\u205f-\\u206f\\u3000\\u3164\\ufe00-\\ufe0f\\ufeff\\uffa0\\ufff0-\\uffff' +
  '\\u{e0000}-\\u{e0fff}]', 'gu');

function escapeOf(character) {
  const code = character.codePointAt(0);
  if (code < 0x100) return '\\x' + code.toString(16).padStart(2, '0');
  return code > 0xffff ? '\\u{' + code.toString(16) + '}' : '\\u' + code.toString(16).padStart(4, '0');
}

// Adds the text to the element; `allowed` are characters that stay as they are.
function putText(element, text, allowed = '') {
  let begin = 0;
  for (const found of text.matchAll(UNSEEN)) {
    if (allowed.includes(found[0])) continue;
    if (found.index > begin) element.append(text.slice(begin, found.index));
    const escape = document.createElement('span');
    escape.className = 'esc';
    escape.textContent = escapeOf(found[0]);
    element.append(escape);
    begin = found.index + found[0].length;
  }
  if (begin < text.length) element.append(text.slice(begin));
  return element;
}

// The same where only a text can stand.
function plainText(text) {
  return text.replace(UNSEEN, escapeOf);
}

// A new element with a text, or with other elements in it.
function make(tag, className = '', ...content) {
  const element = document.createElement(tag);
  if (className) element.className = className;
  for (const one of content) {
    if (typeof one === 'string') putText(element, one);
    else element.append(one);
  }
  return element;
}

function bytesOfHex(digits) {
  const bytes = new Uint8Array(digits.length / 2);
  for (let i = 0; i < bytes.length; ++i) bytes[i] = parseInt(digits.substr(2 * i, 2), 16);
  return bytes;
}

// A name as a text; of one that is no UTF-8 the bytes that are no ASCII as escapes.
function nameText(name) {
  if (typeof name === 'string') return name;
  let text = '';
  for (const byte of bytesOfHex(name.hex)) {
    text += byte >= 0x20 && byte < 0x7f ? String.fromCharCode(byte) : '\\x' + byte.toString(16).padStart(2, '0');
  }
  return text;
}

function grouped(number) {
  return String(number).replace(/\B(?=(\d{3})+$)/g, ',');
}

function counted(count, what) {
  return grouped(count) + ' ' + what + (count === 1 ? '' : 's');
}

// ---- values

const kTypes = ['number', 'text', 'data', 'data', 'data', 'data'];

function typeText(type) {
  return type + ', ' + kTypes[type];
}

// The bytes of a value that is no number.
function bytesOf(value) {
  if (value.hex !== undefined) return bytesOfHex(value.hex);
  if (value.text === undefined) return new Uint8Array(0);
  const text = new TextEncoder().encode(value.text);
  const bytes = new Uint8Array(text.length + 1);
  bytes.set(text);
  return bytes;
}

// What the bytes say if they are UTF-8 without control characters, and one zero byte at their end; null otherwise.
function textOf(bytes) {
  if (bytes.length < 2 || bytes.indexOf(0) !== bytes.length - 1) return null;
  try {
    const text = new TextDecoder('utf-8', { fatal: true, ignoreBOM: true }).decode(bytes.subarray(0, bytes.length - 1));
    return /[\u0000-\u001f\u007f-\u009f]/.test(text) ? null : text;
  } catch (error) {
    return null;
  }
}

// On one line, as short as it gets.
function valueText(value) {
  if (value.set === false) return '(not set)';
  if (value.type === 0) return String(value.number);
  if (value.text !== undefined) return '"' + value.text + '"';
  if (value.hex === '') return '(empty)';
  const text = textOf(bytesOf(value));
  if (text !== null) return '"' + text + '"';
  return value.hex.length > 64 ? value.hex.slice(0, 60) + '..' : value.hex;
}

function hexNumber(number) {
  return '0x' + number.toString(16).toUpperCase();
}

// Sixteen bytes a line: where, the bytes, and what of them is ASCII.
function hexDump(bytes, width) {
  const lines = [];
  for (let begin = 0; begin < bytes.length; begin += width) {
    const line = Array.from(bytes.subarray(begin, begin + width));
    const digits = line.map((byte) => byte.toString(16).padStart(2, '0')).join(' ');
    const text = line.map((byte) => byte >= 0x20 && byte < 0x7f ? String.fromCharCode(byte) : '.').join('');
    lines.push(begin.toString(16).padStart(4, '0') + '  ' + digits.padEnd(3 * width - 1) + '  ' + text);
  }
  return lines.join('\n');
}

// ---- keys

const kRights = ['read', 'modify', 'create', 'delete'];
const kWatched = [
  'values are created, set or deleted', 'the default value is set', 'keys directly below are created or deleted',
  'rights or watch bits are set', 'the key is restored', 'all that for the keys below, too'];

function wordsOf(bits, words) {
  return words.filter((word, bit) => (bits >> bit & 1) !== 0);
}

function rightsLetters(rights) {
  const group = (bits) => Array.from('rwcd', (letter, bit) => (bits >> bit & 1) !== 0 ? letter : '-').join('');
  return group(rights & 15) + ':' + group(rights >> 4);
}

function rightsText(rights) {
  const words = (bits) => wordsOf(bits, kRights).join(', ') || 'nothing';
  return 'owner: ' + words(rights & 15) + '; others: ' + words(rights >> 4) + ' (' + rightsLetters(rights) + ', 0x' +
    rights.toString(16).toUpperCase().padStart(2, '0') + ')';
}

function watchText(watch) {
  return watch === 0 ? 'nothing' : wordsOf(watch, kWatched).join('; ') + ' (' + watch + ')';
}

function ownerText(owner) {
  return owner === 65535 ? '65535, the administrator' : String(owner);
}

function defaultText(number) {
  return number === null ? 'none' : number + ' (' + hexNumber(BigInt(number)) + ')';
}
