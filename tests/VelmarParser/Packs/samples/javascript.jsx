#!/usr/bin/env node
'use strict';
import fs, {readFile as read, default as d} from 'node:fs';
import * as path from "path";
export * from './all.js';
export {main as default, VERSION};
export default class Store extends Base {
  #items = new Map();
  static count = 0;
  onClick = (event) => this.#push(event);
  constructor(limit = 10, ...rest) { super(limit); }
  static async *walk([a, b], {c, d: e, f = 1}) { yield* await a.next(); }
  get size() { return this.#items?.size ?? 0; }
  #push(item) { Store.count += 1; }
}

/**
 * Adds a rule, see {@link Store}.
 * @param {string} [name="x"] the name
 * @returns {Promise<void>}
 */
async function add(name, options) {
  const {flags, pattern: source} = options, MAX_SIZE = 0x10n;
  if (!flags || typeof name !== 'string') throw new TypeError(`no ${name.trim()}\n of ${'a'}`);
  for (const key in options) delete options[key];
  label: for (let i = 0; i < 1e3; i++) { if (i % 2) continue label; else break; }
  try { await fetch(url); } catch (error) { console.error(error.message); } finally {}
  return name instanceof Store ? /^[a-z\d]+(?<n>x|\/)?$/gi.exec(name) : undefined;
}

const double = x => x * 2, {a = 1} = {a, 'b c': 2, [key]: null, f() {}, g: function () {}};
module.exports.run = function run() { debugger; };
const sheet = css`a { color: ${color}; width: 2px }`;
const Button = styled.button.attrs({})`margin: 0;`;
const page = html`<p class="${name}">Hi</p>`, raw = unknown`text`;
const query = /* sql */ `select 1`;
var view = <Panel.Item key="1" {...props} onClick={() => open(1)}><b>Text &amp; {value}</b><Panel /></Panel.Item>;
switch (new.target) { case NaN: default: void import('./x.js'); }
// done
