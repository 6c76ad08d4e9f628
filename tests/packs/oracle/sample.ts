import type { Reader } from "./reader";

/** A store of values. @template T */
export abstract class Store<T extends object = {}> implements Iterable<T> {
  private readonly items: Map<string, T> = new Map();
  static #count = 0;

  constructor(protected reader?: Reader) { super(); Store.#count++; }

  /** Finds one. @param {string} key */
  async find(key: string): Promise<T | undefined> {
    const text = await this.reader?.read(`${key}.json`); // a comment
    if (!/^[a-z]+(\.json)?$/i.test(key)) throw new Error("bad key: " + key);
    return text ? (JSON.parse(text) as T) : this.items.get(key)!;
  }

  *[Symbol.iterator](): Iterator<T> { yield* this.items.values(); }
}

enum Color { Red = 1, Green = "g" }
type Shape = { kind: "circle"; r: number } | { kind: "square"; a: number };
const area = (s: Shape): number => s.kind === "circle" ? Math.PI * s.r ** 2 : s.a * s.a;
const style = css`p { color: ${Color.Red} }`;
const page = /* html */ `<b onclick="f()">${area({ kind: "square", a: 2 })}</b>`;
declare module "x" { export const y: unique symbol; }
